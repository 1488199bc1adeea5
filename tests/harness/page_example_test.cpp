#include "tests/harness/page_example.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quillory::testing {
namespace {

using namespace std::string_literals;

TEST(ParseHexDump, TakesTheBytesBetweenOffsetAndRemark) {
  EXPECT_EQ(parseHexDump("0   31 00        a folder  with 2 names\n"
                         "2   6c 69 62 00\n"
                         "6   00  de ad is a remark\n"),
            "1\0lib\0\0"s);
}

TEST(ParseHexDump, RefusesAnOffsetThatIsWrong) {
  EXPECT_THROW(parseHexDump("0  31 00\n3  00\n"), std::runtime_error);
}

TEST(ParseHexDump, RefusesWhatItDoesNotUnderstand) {
  for (const char* line :
       {"0", "0  3", "0  zz", "0 31", "x  31", "0  31 3", "0  31 a remark", "\n"})
    EXPECT_THROW(parseHexDump(line), std::runtime_error) << line;
}

TEST(PageExample, RefusesAPageOrAnExampleThatIsNotThere) {
  EXPECT_THROW(pageExample("formats/none.md"), std::runtime_error);
  EXPECT_THROW(pageExample("formats/property-block.md", 2), std::runtime_error);
}

}  // namespace
}  // namespace quillory::testing
