#include "packager/config/rollout.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(ParseRollout, TakesAPartOrATime) {
  EXPECT_EQ(parseRollout("25%"), (RolloutPlan{25, 0}));
  EXPECT_EQ(parseRollout("0 %"), (RolloutPlan{0, 0}));
  EXPECT_EQ(parseRollout("100%"), (RolloutPlan{100, 0}));
  EXPECT_EQ(parseRollout("7 days"), (RolloutPlan{100, 7}));
  EXPECT_EQ(parseRollout("1 day"), (RolloutPlan{100, 1}));
  EXPECT_EQ(parseRollout("365d"), (RolloutPlan{100, 365}));
}

TEST(ParseRollout, RefusesWhatCouldBeEither) {
  for (const char* text : {"", "25", "%", "days", "101%", "0 days", "366 days", "-1%", "+7 days",
                           "1.5 days", "7 weeks", "7 days ", " 7 days", "9999999999%", "25%%"}) {
    EXPECT_EQ(parseRollout(text), std::nullopt) << text;
  }
}

TEST(RolloutPlanAsText, SaysWhoGetsItAndWhen) {
  EXPECT_EQ(asText(RolloutPlan{}), "all at once");
  EXPECT_EQ(asText(RolloutPlan{25, 0}), "25 % at once");
  EXPECT_EQ(asText(RolloutPlan{100, 7}), "all within 7 days");
  EXPECT_EQ(asText(RolloutPlan{50, 1}), "50 % within 1 day");
}

}  // namespace
}  // namespace quillory::pack
