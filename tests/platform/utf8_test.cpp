#include "platform/gnustep/utf8.h"

#include <gtest/gtest.h>

namespace quillory::platform {
namespace {

TEST(IsUtf8, HoldsForTextsOfEveryLength) {
  for (const char* text : {"", "ascii", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                           "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf", "a\xc3\xb6z"}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
}

TEST(IsUtf8, FailsForBytesThatAreNone) {
  static constexpr const char* kTexts[] = {
      "\x80",              // continues nothing
      "\xff",              // never occurs
      "\xc0\x80",          // longer than needed
      "\xe0\x9f\xbf",      //
      "\xf0\x8f\xbf\xbf",  //
      "\xed\xa0\x80",      // half of a pair
      "\xf4\x90\x80\x80",  // beyond the last character
      "\xc3",              // cut
      "\xe2\x82",          //
      "\xf0\x9f\x98",      //
      "a\xf6z",            // Latin-1
  };
  for (const char* text : kTexts) EXPECT_FALSE(isUtf8(text)) << text;
}

}  // namespace
}  // namespace quillory::platform
