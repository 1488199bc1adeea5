#include "install/jre_name.h"

#include <gmock/gmock.h>

#include <string>

#include "tests/harness/captured_log.h"

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(JreName, IsEmptyUntilSomebodyGivesOne) { EXPECT_EQ(JreName().text(), ""); }

TEST(JreName, IsMadeOfWhatCanBePartOfAFolderName) {
  const testing::CapturedLog log;
  for (const std::string text : {"", "JRE", "My JRE (1) $HOME", ".", "...", "ü"}) {
    const std::optional<JreName> name = JreName::make(text, "1.8.0_202");
    ASSERT_TRUE(name.has_value()) << text;
    EXPECT_EQ(name->text(), text);
  }
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(JreName, IsRefusedWhereItLeavesTheFolder) {
  for (const std::string& text : {std::string(".."), std::string("../../JRE"), std::string("/"),
                                  std::string("a/b"), std::string("a\0b", 3)})
    EXPECT_FALSE(JreName::make(text, "").has_value()) << text;
}

TEST(JreName, IsRefusedWithAVersionThatLeavesTheFolder) {
  for (const std::string version : {"..", "../8", "8/x"})
    EXPECT_FALSE(JreName::make("JRE", version).has_value()) << version;
  EXPECT_TRUE(JreName::make("JRE", "17").has_value());
}

TEST(JreName, IsRefusedWhereTheFolderNameWouldBeTooLong) {
  EXPECT_TRUE(JreName::make(std::string(228, 'a'), "8").has_value());
  EXPECT_FALSE(JreName::make(std::string(229, 'a'), "8").has_value());
  EXPECT_TRUE(JreName::make(std::string(229, 'a'), "").has_value());
}

TEST(JreName, IsRefusedWithAnErrorInTheLog) {
  const testing::CapturedLog log;
  EXPECT_FALSE(JreName::make("jre/..", "8").has_value());
  const std::string stars = std::string(43, '*') + "\n";
  EXPECT_THAT(log.messages(),
              ElementsAre(stars,
                          "[Extractor] The JRE name 'jre/..' with version '8' cannot be part of a "
                          "folder name\n",
                          stars));
}

}  // namespace
}  // namespace quillory
