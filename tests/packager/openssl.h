// Keys, signatures and digests of another tool than ours.
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/harness/built_key.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// Runs openssl; a test failure when it does not succeed.
inline ChildResult openssl(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "openssl");
  ChildResult result = runChild(arguments);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result;
}

/// The path of a signing key of 2048 bits, the process's own.
inline std::string madeKey() {
  static const TempDir folder;
  const std::string path = folder / "key.pem";
  if (!std::filesystem::exists(path)) {
    std::filesystem::copy_file(builtKey(), path);
    std::filesystem::permissions(
        path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  }
  return path;
}

}  // namespace quillory::testing
