#include "update_window/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::window {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::TempDir;
using testing::writeFile;

TEST(ParseOptions, TakesWhatTheUpdaterGives) {
  std::string why;
  const auto options = parseOptions(
      {"--update", "--at-most", "20", "--properties", "/p", "--own-folder", "/o"}, why);
  ASSERT_TRUE(options) << why;
  EXPECT_EQ(options->occasion, Occasion::kUpdate);
  EXPECT_EQ(options->atMostSeconds, 20);
  EXPECT_THAT(commandFor(*options, "/bin/update"),
              ElementsAre("/bin/update", "install", "--properties", "/p", "--own-folder", "/o"));
  EXPECT_EQ(parseOptions({"--first", "--properties", "/p"}, why)->occasion, Occasion::kFirst);
  const auto asks = parseOptions({"--ask", "--properties", "/p"}, why);
  EXPECT_EQ(asks->occasion, Occasion::kAsk);
  EXPECT_THAT(commandFor(*asks, "/u", {"skip", "2"}),
              ElementsAre("/u", "skip", "2", "--properties", "/p"));
}

TEST(ParseOptions, SaysWhatItDoesNotUnderstand) {
  const std::vector<std::vector<std::string>> cases = {
      {},
      {"--first"},
      {"--properties", "/p"},
      {"--first", "--properties"},
      {"--first", "--properties", "/p", "--other"},
      {"--first", "--properties", "/p", "--at-most", "0"},
      {"--first", "--properties", "/p", "--at-most", "5s"},
      {"--first", "--properties", "/p", "--at-most", "3601"},
  };
  for (const auto& arguments : cases) {
    std::string why;
    EXPECT_FALSE(parseOptions(arguments, why)) << ::testing::PrintToString(arguments);
    EXPECT_NE(why, "");
  }
}

TEST(ParseOptions, AQuestionForHelpIsNoMistake) {
  std::string why = "x";
  EXPECT_FALSE(parseOptions({"--help"}, why));
  EXPECT_EQ(why, "");
  EXPECT_THAT(helpText(), HasSubstr("usage: quillory-update-window"));
}

TEST(AppNameIn, IsTheLastOneOfTheProperties) {
  const TempDir dir;
  writeFile(dir / "p", "a\0b\0qystat_app_name\0Old\0qystat_app_name\0Demo\0odd"s);
  EXPECT_EQ(appNameIn(dir / "p"), "Demo");
  writeFile(dir / "p", "qystat_app_name");
  EXPECT_EQ(appNameIn(dir / "p"), "the application");
  EXPECT_EQ(appNameIn(dir / "none"), "the application");
}

}  // namespace
}  // namespace quillory::window
