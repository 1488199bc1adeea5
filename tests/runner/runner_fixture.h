// A current directory with a runner.cfg, and what the runner prints there.
#pragma once
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "runner/argument_list.h"
#include "support/strings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// Appends `text`, at most 1023 bytes of it, as a slot of its own.
inline void addText(ArgumentList& list, std::string_view text) {
  std::string slot(text.substr(0, argsiz - 1));
  slot.resize(argsiz, '\0');
  addArgs(list.slots.data(), &list.count, slot.data());
}

inline std::vector<std::string> textsOf(ArgumentList& list) {
  return {list.slots.begin(), list.slots.begin() + list.count};
}

/// The test runs in a temporary folder, which is gone afterwards.
class RunnerTest : public ::testing::Test {
 protected:
  RunnerTest() { std::filesystem::current_path(folder_.path()); }
  ~RunnerTest() override { std::filesystem::current_path(before_); }

  void writeConfig(std::string_view lines) const { writeFile(folder_ / "runner.cfg", lines); }

  /// What `action` prints on standard output.
  template <typename Action>
  static std::string outputOf(Action action) {
    ::testing::internal::CaptureStdout();
    action();
    return ::testing::internal::GetCapturedStdout();
  }

  const std::filesystem::path before_ = std::filesystem::current_path();
  const TempDir folder_;
};

}  // namespace quillory::testing
