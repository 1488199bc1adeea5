// A configuration of a small application as the commands get it: read, completed, and with a line
// for each key that findings point to.
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "packager/config/config.h"
#include "tests/packager/project.h"

namespace quillory::testing {

using Names = std::vector<std::string>;

/// Its jar is there, in the folder that paths start from.
class HelloConfig : public ::testing::Test {
 protected:
  HelloConfig() {
    std::filesystem::copy_file(QUILLORY_HELLO_JAR, dir_ / "hello.jar");
    config_.file = "quillory.toml";
    config_.folder = dir_.str();
    config_.application.name = "Hello";
    config_.application.version = 12;
    config_.application.mainClass = "com.example.hello.Hello";
    config_.application.jars = {"hello.jar"};
    config_.updater.version = 3;
    config_.jvm.maximumHeap = 256;
    config_.jvm.initialHeap = 64;
    for (const auto& [key, line] :
         {std::pair{"application.jars", 5u}, std::pair{"application.main-class", 6u},
          std::pair{"application.files", 7u}, std::pair{"application.splash", 8u},
          std::pair{"application.icon", 9u}, std::pair{"updater.jar", 10u},
          std::pair{"updater.main-class", 11u}, std::pair{"updater.cacerts", 12u}}) {
      config_.places[key] = {"quillory.toml", line};
    }
  }

  TempDir dir_;
  pack::Config config_;
};

}  // namespace quillory::testing
