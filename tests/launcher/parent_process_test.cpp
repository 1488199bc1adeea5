#include "launcher/parent_process.h"

#include <gtest/gtest.h>

#include "tests/launcher/in_child.h"

namespace quillory::testing {
namespace {

TEST(ParentRunsThisExecutable, IsFalseForATestProgramUnderItsRunner) {
  EXPECT_FALSE(parentRunsThisExecutable());
}

TEST(ParentRunsThisExecutable, IsTrueForACopyStartedByItself) {
  const Ended ended = inChild([] { _exit(parentRunsThisExecutable() ? 1 : 0); });
  EXPECT_EQ(ended.status, 1);
}

}  // namespace
}  // namespace quillory::testing
