#include "update_window/update_line.h"

#include <gtest/gtest.h>

namespace quillory::window {
namespace {

TEST(ParseUpdateLine, TakesAWordAndDecodesItsValues) {
  const UpdateLine line = parseUpdateLine("failed reason=no%20space%3A%20%C3%BC retry=1 empty=");
  EXPECT_EQ(line.word, "failed");
  EXPECT_EQ(line.text("reason"), "no space: \xC3\xBC");
  EXPECT_EQ(line.number("retry"), 1);
  EXPECT_EQ(line.text("empty"), "");
  EXPECT_EQ(line.text("missing"), "");
}

TEST(ParseUpdateLine, LeavesWhatIsNoByteAsItIs) {
  EXPECT_EQ(parseUpdateLine("x k=100%").text("k"), "100%");
  EXPECT_EQ(parseUpdateLine("x k=%2").text("k"), "%2");
  EXPECT_EQ(parseUpdateLine("x k=%zz=%41").text("k"), "%zz=A");
  EXPECT_EQ(parseUpdateLine("x k=%-1").text("k"), "%-1");
}

TEST(ParseUpdateLine, SurvivesWhatIsNoLineOfOurs) {
  EXPECT_EQ(parseUpdateLine("").word, "");
  EXPECT_EQ(parseUpdateLine("  x").word, "");
  EXPECT_TRUE(parseUpdateLine("word nothing more").values.empty());
  EXPECT_EQ(parseUpdateLine("x =v").text(""), "v");
}

TEST(UpdateLineNumber, IsNoneForWhatIsNoNumber) {
  const UpdateLine line = parseUpdateLine("x a=-5 b=many c=99999999999999999999 d=12");
  EXPECT_EQ(line.number("a"), 0);
  EXPECT_EQ(line.number("b"), 0);
  EXPECT_EQ(line.number("c"), 0);
  EXPECT_EQ(line.number("d"), 12);
}

}  // namespace
}  // namespace quillory::window
