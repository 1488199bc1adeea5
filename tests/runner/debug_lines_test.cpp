#include "runner/debug_lines.h"

#include <gtest/gtest.h>

#include "tests/harness/scoped_replace.h"

namespace quillory {
namespace {

std::string printed() {
  ::testing::internal::CaptureStdout();
  printDebug("%s is %d\n", "this", 5);
  return ::testing::internal::GetCapturedStdout();
}

TEST(PrintDebug, IsSilentAtFirst) {
  EXPECT_EQ(DEBUG, 0);
  EXPECT_EQ(printed(), "");
}

TEST(PrintDebug, PrintsWhenAskedTo) {
  const testing::ScopedReplace debug(DEBUG, 1);
  EXPECT_EQ(printed(), "this is 5\n");
}

TEST(OrNull, ShowsThatThereIsNoText) {
  EXPECT_STREQ(orNull("text"), "text");
  EXPECT_STREQ(orNull(nullptr), "(null)");
}

}  // namespace
}  // namespace quillory
