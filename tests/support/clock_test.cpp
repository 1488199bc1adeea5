#include "support/clock.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <chrono>

#include "support/for_embedders.h"
#include "tests/harness/scoped_replace.h"
#include "tests/support/wall_clock.h"

namespace quillory {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::epochMillis;
using testing::ScopedReplace;

TEST(GetCurrentTimeMillis, IsTheWallClock) {
  const std::int64_t before = epochMillis();
  const auto now = static_cast<std::int64_t>(getCurrentTimeMillis());
  const std::int64_t after = epochMillis();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(TheClock, IsZeroWhenItCannotBeRead) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{0}; });
  EXPECT_EQ(getCurrentTimeMillis(), 0U);
  EXPECT_EQ(systemTimeMillis(), 0U);
  EXPECT_EQ(getJustMillis(), 0);
}

TEST(SleepMicros, WaitsAtLeastThatLong) {
  const auto begin = steady_clock::now();
  timeCalls.sleepMicros(20000);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(20));
}

}  // namespace
}  // namespace quillory
