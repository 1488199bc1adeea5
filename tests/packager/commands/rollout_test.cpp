#include "packager/commands/rollout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

class Rollout : public ReleasedProject {
 protected:
  Rollout() { release(config(1, "", "rollout = \"25%\"\n")); }
  CommandResult run(const std::string& plan) {
    return pack({"rollout", plan, project_ / "quillory.toml"});
  }
};

TEST_F(Rollout, OffersTheReleaseToAPartOrOverDays) {
  EXPECT_EQ(list().rollout, (quillory::Rollout{kSomeTime, 0, 25}));
  CommandResult result = run("50%");
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("offered to 50 % at once\n"));
  EXPECT_EQ(list().number, 2);
  EXPECT_EQ(list().rollout, (quillory::Rollout{list().issued, 0, 50}));
  result = run("7d");
  EXPECT_THAT(result.err, HasSubstr("offered to all within 7 days\n"));
  EXPECT_EQ(list().rollout, (quillory::Rollout{list().issued, 7, 100}));
}

TEST_F(Rollout, RefusesWhatIsNeitherAPartNorATime) {
  const CommandResult result = run("50");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "error: \"50\" is neither a part nor a time\n"
            "  -> quillory-pack rollout 25%, or: quillory-pack rollout 7d\n");
  EXPECT_EQ(list().number, 1);
}

}  // namespace
}  // namespace quillory::testing
