#include "launcher/session_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillory {
namespace {

using ::testing::ElementsAre;

// What is left of the arguments, by `function`.
std::vector<std::string> leftOf(std::vector<std::string> arguments, int (*function)(int, char**)) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const int count = function(static_cast<int>(arguments.size()), pointers.data());
  EXPECT_EQ(pointers[static_cast<std::size_t>(count)], nullptr);
  return {pointers.begin(), pointers.begin() + count};
}

TEST(WithoutSessionArguments, ClosesTheGap) {
  EXPECT_THAT(leftOf({"launcher", "a", "-psn_0_12345", "b", "-psn_"}, withoutSessionArguments),
              ElementsAre("launcher", "a", "b"));
}

TEST(WithoutSessionArguments, LeavesWhatOnlyLooksLikeOne) {
  EXPECT_THAT(leftOf({"-psn_0_1", "-psn", "psn_0_1", "--psn_0_1", ""}, withoutSessionArguments),
              ElementsAre("-psn_0_1", "-psn", "psn_0_1", "--psn_0_1", ""));
}

TEST(WithoutSessionArguments, LeavesAListOfNothingButTheName) {
  EXPECT_THAT(leftOf({"launcher"}, withoutSessionArguments), ElementsAre("launcher"));
}

TEST(TheEntry, LeavesTheUsersArgumentsAndTheUsualStack) {
  EXPECT_THAT(leftOf({"launcher", "-psn_0_1"}, withoutArgumentsOfTheSystem),
              ElementsAre("launcher", "-psn_0_1"));
  EXPECT_EQ(runThreadStackBytes(), 0U);
}

}  // namespace
}  // namespace quillory
