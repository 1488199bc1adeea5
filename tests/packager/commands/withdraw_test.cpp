#include "packager/commands/withdraw.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

class Withdraw : public ReleasedProject {
 protected:
  CommandResult run(const std::string& version) {
    return pack({"withdraw", version, project_ / "quillory.toml"});
  }
  ReleaseComponent application(const ReleaseList& list) const {
    return *componentOf(list, kApplicationRole);
  }
  void releaseVersions(int last) {
    for (int version = 1; version <= last; ++version) {
      release(config(version, "", "rollout = \"7 days\"\n"));
    }
  }
};

TEST_F(Withdraw, OffersTheVersionBeforeToEverybody) {
  releaseVersions(3);
  const ReleaseComponent bad = application(list());
  const CommandResult result = run("3");
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(list().number, 4);
  EXPECT_EQ(list().withdrawn, (std::vector<WithdrawnRelease>{{bad.plainSha256, "3"}}));
  EXPECT_EQ(application(list()), application(listIn("Quillory-Hello-stable-releases-2")));
  EXPECT_EQ(list().rollout, (quillory::Rollout{list().issued, 0, 100}));
}

TEST_F(Withdraw, GoesBackOverAllThatAreWithdrawn) {
  releaseVersions(3);
  ASSERT_EQ(run("3").status, 0);
  ASSERT_EQ(run("2").status, 0);
  EXPECT_EQ(application(list()).version, "1");
  ASSERT_EQ(list().withdrawn.size(), 2u);
  EXPECT_THAT(run("1").err, HasSubstr("there is no other version to go back to [withdraw]"));
  EXPECT_EQ(list().number, 5);
}

// Who has it goes on to what is offered anyway.
TEST_F(Withdraw, LeavesTheOfferWhereAnOlderVersionWasBad) {
  releaseVersions(3);
  const ReleaseList before = list();
  ASSERT_EQ(run("2").status, 0);
  EXPECT_EQ(list().components, before.components);
  EXPECT_EQ(list().rollout, before.rollout);
  EXPECT_EQ(list().withdrawn[0].version, "2");
}

TEST_F(Withdraw, StaysInTheReleasesBehindIt) {
  releaseVersions(2);
  ASSERT_EQ(run("2").status, 0);
  EXPECT_THAT(refusal(config(1, "display-version = \"again\"\n")), HasSubstr("[version-order]"));
  release(config(3));
  EXPECT_EQ(application(list()).version, "3");
  ASSERT_EQ(list().withdrawn.size(), 1u);
  EXPECT_EQ(list().withdrawn[0].version, "2");
}

TEST_F(Withdraw, RefusesVersionsThatWereNeverReleasedOrAreWithdrawn) {
  releaseVersions(2);
  EXPECT_THAT(run("7").err, HasSubstr("version 7 of \"Hello\" was never released [withdraw]"));
  ASSERT_EQ(run("2").status, 0);
  const CommandResult again = run("2");
  EXPECT_EQ(again.status, 3);
  EXPECT_THAT(again.err, HasSubstr("version 2 is withdrawn already [withdraw]"));
}

}  // namespace
}  // namespace quillory::testing
