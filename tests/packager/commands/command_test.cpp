#include "packager/commands/command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;

TEST(IsOption, IsWhatHasADash) {
  EXPECT_TRUE(isOption({.name = "--bits"}));
  EXPECT_TRUE(isOption({.name = "-o,--output"}));
  EXPECT_FALSE(isOption({.name = "NAME=VALUE"}));
}

TEST(NamesOf, AreInTheOrderInWhichTheyAreWritten) {
  EXPECT_THAT(namesOf({.name = "-o,--output"}), ElementsAre("-o", "--output"));
  EXPECT_THAT(namesOf({.name = "--bits"}), ElementsAre("--bits"));
  EXPECT_THAT(namesOf({.name = "FILE"}), ElementsAre("FILE"));
}

TEST(DefaultOf, IsWhatTheArgumentWouldSet) {
  bool flag = true;
  int number = 3072;
  std::optional<int> level;
  std::string text = "quillory.toml";
  std::vector<std::string> texts = {"one"};
  EXPECT_EQ(defaultOf({.name = "X", .into = &number}), "3072");
  EXPECT_EQ(defaultOf({.name = "X", .into = &text}), "quillory.toml");
  EXPECT_EQ(defaultOf({.name = "X", .into = &level}), "");
  level = 6;
  EXPECT_EQ(defaultOf({.name = "X", .into = &level}), "6");
  // Neither has a default that people would write down.
  EXPECT_EQ(defaultOf({.name = "X", .into = &flag}), "");
  EXPECT_EQ(defaultOf({.name = "X", .into = &texts}), "");
}

}  // namespace
}  // namespace quillory::pack
