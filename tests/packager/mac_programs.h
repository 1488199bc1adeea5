// A folder of programs for macOS, as far as their headers tell: a launcher and a runtime that goes
// with it, and the tools of a bundle.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "tests/harness/temp_dir.h"
#include "tests/packager/mach_o_bytes.h"

namespace quillory::testing {

/// The beginning of a program for Linux.
inline constexpr char kElf[] = "\x7F\x45LF";

class MacPrograms : public ::testing::Test {
 protected:
  MacPrograms() {
    const std::string program = universalMachO({kX86, kArm});
    for (const char* name : {"launcher", "lzma64", "elev_mac", "jre/bin/java"}) {
      writeFile(dir_ / name, program);
    }
    writeFile(dir_ / "jre/lib/server/libjvm.dylib", "x");
  }

  TempDir dir_;
};

}  // namespace quillory::testing
