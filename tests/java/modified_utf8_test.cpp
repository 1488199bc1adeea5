#include "java/modified_utf8.h"

#include <gtest/gtest.h>

namespace quillory {
namespace {

using namespace std::string_literals;

constexpr char kReplacement[] = "\xEF\xBF\xBD";

TEST(ToModifiedUtf8, LeavesCharactersUpToUffffAsTheyAre) {
  for (const std::string text :
       {"", "plain", "\x7F", "\xC2\x80", "\xC3\xBC \xDF\xBF", "\xE0\xA0\x80", "\xE2\x82\xAC",
        "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD", "\xEF\xBF\xBF"})
    EXPECT_EQ(toModifiedUtf8(text), text);
}

TEST(ToModifiedUtf8, WritesCharactersBeyondUffffAsTwoSurrogates) {
  static constexpr struct {
    const char* text;
    const char* expected;
  } kCases[] = {{"\xF0\x90\x80\x80", "\xED\xA0\x80\xED\xB0\x80"},   // U+10000: D800 DC00
                {"\xF0\x9F\x98\x80", "\xED\xA0\xBD\xED\xB8\x80"},   // U+1F600: D83D DE00
                {"\xF4\x8F\xBF\xBF", "\xED\xAF\xBF\xED\xBF\xBF"}};  // U+10FFFF: DBFF DFFF
  for (const auto& [text, expected] : kCases) EXPECT_EQ(toModifiedUtf8(text), expected);
  EXPECT_EQ(toModifiedUtf8("a\xF0\x9F\x98\x80z"), "a\xED\xA0\xBD\xED\xB8\x80z");
}

TEST(ToModifiedUtf8, ReplacesWhatIsNotUtf8AndKeepsWhatFollows) {
  static constexpr struct {
    const char* what;
    const char* text;
    int replacements;
  } kCases[] = {{"continuation alone", "\x80", 1},
                {"two continuations alone", "\xBF\x80", 2},
                {"never a lead byte", "\xFE", 1},
                {"overlong slash", "\xC0\xAF", 2},
                {"overlong in three bytes", "\xE0\x9F\xBF", 3},
                {"overlong in four bytes", "\xF0\x8F\xBF\xBF", 4},
                {"surrogate", "\xED\xA0\x80", 3},
                {"above U+10FFFF", "\xF4\x90\x80\x80", 4},
                {"lead bytes above that", "\xF5\x80", 2},
                {"two bytes, cut", "\xC3", 1},
                {"three bytes, cut", "\xE2\x82", 1},
                {"four bytes, cut", "\xF0\x9F\x98", 1}};
  for (const auto& [what, text, replacements] : kCases) {
    SCOPED_TRACE(what);
    std::string expected;
    for (int i = 0; i < replacements; ++i) expected += kReplacement;
    EXPECT_EQ(toModifiedUtf8("a"s + text + "z"), "a" + expected + "z");
    EXPECT_EQ(toModifiedUtf8(text), expected);
  }
}

}  // namespace
}  // namespace quillory
