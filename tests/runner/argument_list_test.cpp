#include "runner/argument_list.h"

#include <gtest/gtest.h>

#include "tests/runner/runner_fixture.h"

namespace quillory {
namespace {

TEST(ArgumentListOf, IsEmptyPointersOfAFixedNumberAtFirst) {
  ArgumentList list(100);
  EXPECT_EQ(list.capacity(), 100);
  EXPECT_EQ(list.count, 0);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(list[i], nullptr);
}

TEST(ArgumentListOf, KeepsAPointerOfTheCommandForTheNullAtItsEnd) {
  EXPECT_EQ(commandList().capacity(), 499);
}

// The sanitizer build sees to the rest.
TEST(ArgumentListOf, OwnsItsSlotsButNotWhatIsLeftOverBehindThem) {
  ArgumentList list(3);
  testing::addText(list, "one");
  list[1] = list[0];
  EXPECT_EQ(list.count, 1);
}

}  // namespace
}  // namespace quillory
