#include "update/lines.h"

#include <gtest/gtest.h>

namespace quillory::testing {
namespace {

using update::Line;
using update::percentEncoded;

TEST(Line, IsAWordAndItsValues) {
  EXPECT_EQ(Line("busy").text(), "busy");
  EXPECT_EQ(Line("offer").with("release", 7).with("shown", "1.2").text(),
            "offer release=7 shown=1.2");
  EXPECT_EQ(Line("failed").with("reason", "").text(), "failed reason=");
}

TEST(PercentEncoded, LeavesNothingThatWouldEndAValueOrALine) {
  EXPECT_EQ(percentEncoded("a b=c\nd%"), "a%20b%3Dc%0Ad%25");
  EXPECT_EQ(percentEncoded("J\xc3\xb6rg"), "J%C3%B6rg");
  EXPECT_EQ(percentEncoded("https://a.b/c-d_e~f,g+1"), "https://a.b/c-d_e~f,g+1");
}

}  // namespace
}  // namespace quillory::testing
