#include "packager/report/dates.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillory::pack {
namespace {

TEST(ReadableTime, IsInUtcWhateverTheMachineSays) {
  EXPECT_EQ(readableTime(0), "1970-01-01 00:00 UTC");
  EXPECT_EQ(readableTime(1'795'322'160), "2026-11-22 04:36 UTC");
}

TEST(ReadableTime, HasANumberForWhatIsNoDate) {
  EXPECT_EQ(readableTime(std::numeric_limits<std::int64_t>::max()),
            "9223372036854775807 s since 1970");
}

}  // namespace
}  // namespace quillory::pack
