#include "update/pace.h"

#include <gtest/gtest.h>

#include "support/clock.h"
#include "tests/harness/scoped_replace.h"
#include "update/chance.h"

namespace quillory::testing {
namespace {

using update::isDue;
using update::noteAnswer;
using update::noteFailure;
using update::State;

constexpr std::int64_t kHour = 3600;
std::int64_t theTime = 0;
std::uint64_t theChance = 0;

class Pace : public ::testing::Test {
 protected:
  Pace() {
    theTime = 1790000000;
    theChance = ~std::uint64_t{0} / 2;  // in the middle: neither more nor less
  }
  State state_;

 private:
  ScopedReplace<decltype(timeCalls.nowMillis)> clock_{
      timeCalls.nowMillis, +[] { return static_cast<std::uint64_t>(theTime) * 1000; }};
  ScopedReplace<decltype(update::chanceCalls.next)> chance_{update::chanceCalls.next,
                                                            +[] { return theChance; }};
};

TEST_F(Pace, BeginsWithACheck) { EXPECT_TRUE(isDue(state_, 24)); }

TEST_F(Pace, WaitsAFifthMoreOrLessThanItShould) {
  for (const auto& [chance, hours] :
       {std::pair{std::uint64_t{0}, 19.2}, std::pair{~std::uint64_t{0} / 2, 24.0},
        std::pair{~std::uint64_t{0}, 28.8}}) {
    theChance = chance;
    noteAnswer(state_, 24);
    EXPECT_NEAR(static_cast<double>(state_.nextCheck - theTime), hours * kHour, 2) << hours;
  }
}

TEST_F(Pace, IsDueWhenTheTimeHasCome) {
  noteAnswer(state_, 24);
  theTime += 24 * kHour - 10;
  EXPECT_FALSE(isDue(state_, 24));
  theTime += 20;
  EXPECT_TRUE(isDue(state_, 24));
}

TEST_F(Pace, BacksOffFromAMinuteToSixHours) {
  std::vector<std::int64_t> minutes;
  for (int i = 0; i < 12; ++i) {
    noteFailure(state_);
    minutes.push_back((state_.nextCheck - theTime + 30) / 60);
  }
  EXPECT_EQ(minutes, (std::vector<std::int64_t>{1, 2, 4, 8, 16, 32, 64, 128, 256, 360, 360, 360}));
  noteAnswer(state_, 24);
  noteFailure(state_);
  EXPECT_NEAR(static_cast<double>(state_.nextCheck - theTime), 60, 1);
}

TEST_F(Pace, IsNotHeldUpByAClockThatWasSetBack) {
  noteAnswer(state_, 24);
  theTime -= 365 * 24 * kHour;
  EXPECT_TRUE(isDue(state_, 24));
}

TEST_F(Pace, SurvivesAClockThatCannotBeRead) {
  theTime = 0;
  noteFailure(state_);
  EXPECT_FALSE(isDue(state_, 24));
  EXPECT_EQ(state_.failures, 1);
}

TEST(Chance, MakesDrawsThatDiffer) {
  const std::string draw = update::newDraw();
  EXPECT_EQ(draw.size(), 32u);
  EXPECT_EQ(draw.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(update::newDraw(), draw);
}

TEST(Chance, IsAPartOfOne) {
  const ScopedReplace most(
      update::chanceCalls.next, +[] { return ~std::uint64_t{0}; });
  EXPECT_LT(update::anyPart(), 1);
  EXPECT_GT(update::anyPart(), 0.999);
}

}  // namespace
}  // namespace quillory::testing
