#include "support/utf8.h"

#include <gtest/gtest.h>

#include <vector>

namespace quillory {
namespace {

using namespace std::string_view_literals;

TEST(IsUtf8, HoldsForTextsOfEveryLength) {
  for (const auto text : {""sv, "ascii"sv, "a\0z"sv, "\xc2\x80"sv, "\xdf\xbf"sv, "\xe0\xa0\x80"sv,
                          "\xed\x9f\xbf"sv, "\xee\x80\x80"sv, "\xef\xbf\xbf"sv,
                          "\xf0\x90\x80\x80"sv, "\xf4\x8f\xbf\xbf"sv, "a\xc3\xb6z"sv}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
}

TEST(IsUtf8, FailsForBytesThatAreNone) {
  static constexpr const char* kTexts[] = {
      "\x80",              // continues nothing
      "\xff",              // never occurs
      "\xc0\x80",          // longer than needed
      "\xe0\x80\x80",      //
      "\xe0\x9f\xbf",      //
      "\xf0\x8f\xbf\xbf",  //
      "\xed\xa0\x80",      // half of a pair
      "\xed\xbf\xbf",      //
      "\xf4\x90\x80\x80",  // beyond the last character
      "\xf5\x80\x80\x80",  //
      "\xc3",              // cut
      "\xe2\x82",          //
      "\xf0\x9f\x98",      //
      "\xc3x",             // cut by another character
      "\xf0\x9f\x98x",     //
      "a\xf6z",            // Latin-1
  };
  for (const char* text : kTexts) EXPECT_FALSE(isUtf8(text)) << text;
}

TEST(IsUtf8, ReadsNothingBehindTheText) {
  // The bytes behind each cut would complete the character; the copies show a read to a sanitizer.
  for (const auto whole : {"\xc3\xb6"sv, "\xe2\x82\xac"sv, "\xf0\x9f\x98\x80"sv}) {
    for (std::size_t length = 1; length < whole.size(); ++length) {
      const auto cut = whole.substr(0, length);
      EXPECT_FALSE(isUtf8(cut)) << cut;
      const std::vector<char> copy(cut.begin(), cut.end());
      EXPECT_FALSE(isUtf8({copy.data(), copy.size()})) << cut;
    }
  }
}

}  // namespace
}  // namespace quillory
