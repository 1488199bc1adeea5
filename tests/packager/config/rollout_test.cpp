#include "packager/config/rollout.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(ParseRollout, TakesAPartOrATime) {
  EXPECT_EQ(parseRollout("25%"), (Rollout{25, 0}));
  EXPECT_EQ(parseRollout("0 %"), (Rollout{0, 0}));
  EXPECT_EQ(parseRollout("100%"), (Rollout{100, 0}));
  EXPECT_EQ(parseRollout("7 days"), (Rollout{100, 7}));
  EXPECT_EQ(parseRollout("1 day"), (Rollout{100, 1}));
  EXPECT_EQ(parseRollout("365d"), (Rollout{100, 365}));
}

TEST(ParseRollout, RefusesWhatCouldBeEither) {
  for (const char* text : {"", "25", "%", "days", "101%", "0 days", "366 days", "-1%", "+7 days",
                           "1.5 days", "7 weeks", "7 days ", " 7 days", "9999999999%", "25%%"}) {
    EXPECT_EQ(parseRollout(text), std::nullopt) << text;
  }
}

TEST(RolloutAsText, SaysWhoGetsItAndWhen) {
  EXPECT_EQ(asText(Rollout{}), "all at once");
  EXPECT_EQ(asText(Rollout{25, 0}), "25 % at once");
  EXPECT_EQ(asText(Rollout{100, 7}), "all within 7 days");
  EXPECT_EQ(asText(Rollout{50, 1}), "50 % within 1 day");
}

}  // namespace
}  // namespace quillory::pack
