#include "packager/report/joined.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(Joined, PutsTheTextBetweenTheWordsOnly) {
  EXPECT_EQ(joined({}, ", "), "");
  EXPECT_EQ(joined({"one"}, ", "), "one");
  EXPECT_EQ(joined({"one", "two", "three"}, " or "), "one or two or three");
  EXPECT_EQ(joined({"one", "", "three"}, ","), "one,,three");
}

}  // namespace
}  // namespace quillory::pack
