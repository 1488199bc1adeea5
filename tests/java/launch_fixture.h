// An installed application for launches: a master folder with a private JRE, whose `java` is a
// shell script that writes down its arguments, and a version folder with a launch file.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "formats/property_block.h"
#include "support/clock.h"
#include "support/process.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// A launch file, record by record. The numbers are texts, so that they can be wrong.
struct LaunchFileText {
  std::string version = "6";
  std::string mainClass = "com.example.Main";
  std::string appName = "demo";
  std::string memory = "0";
  std::string stack = "0";
  std::vector<std::string> classPath = {"a.jar", "lib/b.jar"};
  std::vector<std::string> extraArguments = {"extra"};
  std::string compatibilityClass = "com.example.Compatible";
  std::vector<std::string> options = {"-Dignored=1"};

  /// As a file of that version has it, and no record more.
  std::string bytes() const;
};

/// For a process with a JVM in it, which handles its faults itself and frees nothing at the end.
ChildOptions withJvm();

class LaunchTest : public ::testing::Test {
 protected:
  LaunchTest();

  void writeLaunchFile(const LaunchFileText& file) const;
  /// Everything else as most tests want it.
  std::int64_t launch(int launchClass, const std::string& jre = "JRE");
  /// Makes processCalls.spawn only write down what it is given, and return `result`.
  void recordSpawn(int result = 0);
  /// The arguments of the process that was started last, the executable first.
  static const std::vector<std::string>& spawned();
  /// The arguments that the script `java` at `path` was really called with, without itself.
  static std::vector<std::string> seenBy(const std::string& path);
  /// A `java` that writes down its arguments and then runs `end`.
  static void writeJava(const std::string& path, const std::string& end);

  TempDir dir_;
  std::string master_ = dir_ / "Quillory-Demo";
  std::string app_ = master_ + "/Quillory-Demo-3-complete";
  std::string jre_ = master_ + "/Quillory-JRE-17-complete";
  std::string executable_ = jre_ + "/bin/demo";
  /// The time stands still, so the launch-properties file has this path.
  std::string properties_ = app_ + "/QYLaunchProperties-1700000000123-3";
  PropertyBlock block_;
  std::vector<std::string> userArguments_ = {"user", "two words"};
  std::string updateUrl_ = "http://update/";
  const char* dynamicUpdateUrl_ = nullptr;
  CapturedLog log_;

 private:
  ScopedReplace<decltype(timeCalls.nowMillis)> clock_;
  ScopedReplace<decltype(processCalls.spawn)> spawn_;
};

}  // namespace quillory::testing
