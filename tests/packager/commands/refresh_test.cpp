#include "packager/commands/refresh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

class Refresh : public ReleasedProject {};

TEST_F(Refresh, ChangesTheTimesAndTheNumberAlone) {
  release(config(1, "", "expires-days = 30\n"));
  const ReleaseList before = list();
  const CommandResult result = pack({"refresh", "--json", project_ / "quillory.toml"});
  ASSERT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(result.out, ::testing::HasSubstr("\"number\": 2"));
  ReleaseList after = list();
  EXPECT_GT(after.issued, 1'700'000'000) << "by the clock of this machine";
  EXPECT_EQ(after.expires, after.issued + 30 * 86'400);
  after.number = before.number;
  after.issued = before.issued;
  after.expires = before.expires;
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace quillory::testing
