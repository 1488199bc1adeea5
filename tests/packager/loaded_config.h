// Configurations as they are read: accepted, or with what is wrong with them.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "packager/config/config.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

inline constexpr char kMinimal[] =
    "[application]\n"
    "name = \"Hello\"\n"
    "version = 3\n"
    "main-class = \"com.example.Hello\"\n"
    "jars = [\"hello.jar\"]\n"
    "identifier = \"com.example.hello\"\n";

struct Loaded {
  pack::Config config;
  pack::Findings findings;  // also those of a rejected file
  bool accepted = false;
};

inline Loaded load(const std::string& text) {
  TempDir dir;
  writeFile(dir / "quillory.toml", text);
  Loaded loaded;
  try {
    loaded.config = pack::loadConfig(dir / "quillory.toml", loaded.findings);
    loaded.accepted = true;
  } catch (const pack::RejectedInput& e) {
    loaded.findings = e.findings();
  }
  for (pack::Finding& finding : loaded.findings) {
    EXPECT_EQ(finding.place.file, dir / "quillory.toml") << finding.what;
    finding.place.file.clear();
  }
  return loaded;
}

// The minimal configuration with more lines behind it.
inline Loaded loadWith(const std::string& more) { return load(kMinimal + more); }

}  // namespace quillory::testing
