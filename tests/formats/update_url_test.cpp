#include "formats/update_url.h"

#include <gtest/gtest.h>

namespace quillory {
namespace {

TEST(UpdateUrl, HasEachFormForEachReader) {
  const std::optional<std::string> none;
  static const struct {
    const char* inTail;
    std::optional<std::string> inParams;
    bool isDynamic;
    const char* asItCame;
    const char* inForce;
    const char* toldOfTail;
    std::optional<std::string> toldOfParams;
  } kCases[] = {{"http://s", none, false, "http://s", "http://s/", "http://s/", none},
                {"http://s/", none, false, "http://s/", "http://s/", "http://s/", none},
                {"http://s", "http://d", false, "http://s", "http://s/", "http://s/", "http://d"},
                {"", none, false, "", "", "", none},
                {"", "http://d", false, "", "", "", "http://d"},
                {"D", "http://d", true, "http://d", "http://d/", "D", "http://d/"},
                {"D", "http://d/", true, "http://d/", "http://d/", "D", "http://d/"},
                {"D", "", true, "", "", "D", ""},
                {"D", none, true, "", "", "D", none},
                {"D/", "http://d", false, "D/", "D/", "D/", "http://d"},
                {"d", "http://d", false, "d", "d/", "d/", "http://d"},
                {"/", none, false, "/", "/", "/", none}};
  for (const auto& expected : kCases) {
    SCOPED_TRACE(::testing::Message() << expected.inTail << ' ' << expected.inParams.value_or("-"));
    const UpdateUrl url(expected.inTail, expected.inParams);
    EXPECT_EQ(url.isDynamic(), expected.isDynamic);
    EXPECT_EQ(url.asItCame(), expected.asItCame);
    EXPECT_EQ(url.inForce(), expected.inForce);
    EXPECT_EQ(url.toldOfTail(), expected.toldOfTail);
    EXPECT_EQ(url.toldOfParams(), expected.toldOfParams);
  }
}

TEST(UpdateUrl, IsEmptyWithoutATail) {
  EXPECT_EQ(UpdateUrl().inForce(), "");
  EXPECT_EQ(UpdateUrl().toldOfTail(), "");
  EXPECT_FALSE(UpdateUrl().toldOfParams());
}

TEST(IsInvalidUpdateURL, IsTrueForWhateverBeginsWithTheSentinel) {
  EXPECT_TRUE(isInvalidUpdateURL("http://no.invalid/"));
  EXPECT_TRUE(isInvalidUpdateURL("http://no.invalid/updates/mac/"));
}

TEST(IsInvalidUpdateURL, ComparesAllOfTheEighteenCharacters) {
  static_assert(sizeof kInvalidUpdateURL - 1 == 18);
  EXPECT_FALSE(isInvalidUpdateURL("http://no.invalid"));
  EXPECT_FALSE(isInvalidUpdateURL("http://no.invalid."));
  EXPECT_FALSE(isInvalidUpdateURL("https://no.invalid/"));
  EXPECT_FALSE(isInvalidUpdateURL("HTTP://no.invalid/"));
  EXPECT_FALSE(isInvalidUpdateURL(" http://no.invalid/"));
  EXPECT_FALSE(isInvalidUpdateURL(""));
}

TEST(IsInvalidUpdateURL, IsFalseForNull) { EXPECT_FALSE(isInvalidUpdateURL(nullptr)); }

TEST(EscapedForUrl, EscapesWhatNoAddressCanHoldAndNothingElse) {
  static constexpr struct {
    const char* name;
    const char* escaped;
  } kCases[] = {{"", ""},
                {"Quillory-JRE-1.8.0_202-archive.p2.l2", "Quillory-JRE-1.8.0_202-archive.p2.l2"},
                {"My JRE", "My%20JRE"},
                {"JR\xC3\x89", "JR%C3%89"},
                {"\xE6\x97\xA5\xE6\x9C\xAC", "%E6%97%A5%E6%9C%AC"},
                {"not UTF-8: \xE9", "not%20UTF-8:%20%E9"},
                {"\"<>\\^`{|}\x01\x7F", "%22%3C%3E%5C%5E%60%7B%7C%7D%01%7F"},
                {"!$&'()*+,-./:;=?@[]_~#", "!$&'()*+,-./:;=?@[]_~#"},
                {"My%20JRE", "My%20JRE"},
                {"100% Java", "100%25%20Java"},
                {"%", "%25"},
                {"%2", "%252"},
                {"%2x", "%252x"},
                {"%%41", "%25%41"}};
  for (const auto& [name, escaped] : kCases) EXPECT_EQ(escapedForUrl(name), escaped) << name;
}

}  // namespace
}  // namespace quillory
