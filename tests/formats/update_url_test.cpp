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
    SCOPED_TRACE(testing::Message() << expected.inTail << ' ' << expected.inParams.value_or("-"));
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

}  // namespace
}  // namespace quillory
