#include "packager/commands/release_list_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packager/keys/public_key.h"
#include "packager/writing/release_list_writer.h"
#include "tests/packager/hello_config.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using ::testing::HasSubstr;
using testing::writeFile;

const std::string kDigest(64, 'a');

class PlannedList : public testing::HelloConfig {
 protected:
  PlannedList() {
    config_.places["update.notes"] = {"quillory.toml", 30};
    config_.places["update.stepping-stone"] = {"quillory.toml", 31};
  }
  ReleaseFolder folder() { return {dir_ / "release", "Hello", "beta", {}, ignored_}; }
  ReleaseList plan() { return plannedList(config_, folder(), keys_, 7, 1'000'000); }
  std::string refusal() {
    try {
      plan();
    } catch (const RejectedInput& e) {
      return asText(e.findings().at(0));
    }
    return "";
  }
  void writeEarlier(const ReleaseList& list, const std::string& end) {
    std::filesystem::create_directories(dir_ / "release");
    writeReleaseList(dir_ / "release/Quillory-Hello-beta-releases" + end, list, {&keys_.working},
                     Salt::kDerived);
  }
  static ReleaseList earlier(std::int64_t number) {
    ReleaseList list{"Hello", "beta", "linux", number, 1000, 2000};
    list.components = {
        {"application", "Hello", "1", "1", {"archive.p2.l2", 5, kDigest}, 9, kDigest, 7}};
    return list;
  }

  Findings ignored_;
  const UpdateKeys keys_{SigningKey::load(testing::madeKey()), std::nullopt, {}, {}};
};

TEST_F(PlannedList, OffersItselfToEverybodyForNinetyDays) {
  const ReleaseList list = plan();
  EXPECT_EQ(list.application, "Hello");
  EXPECT_EQ(list.channel, "beta");
  EXPECT_EQ(list.number, 7);
  EXPECT_EQ(list.issued, 1'000'000);
  EXPECT_EQ(list.expires, 1'000'000 + 90 * 86'400);
  EXPECT_EQ(list.rollout, (Rollout{1'000'000, 0, 100}));
  EXPECT_EQ(list.notes, "");
  EXPECT_EQ(list.steppingStone, ReleaseFile{});
  EXPECT_TRUE(list.components.empty());
}

TEST_F(PlannedList, SaysWhatTheConfigurationSays) {
  writeFile(dir_ / "notes.md", "# New\n");
  config_.update.release.notes = "notes.md";
  config_.update.release.rollout = "7 days";
  config_.update.release.expiresDays = 30;
  config_.update.release.minimumSystem = "10.15";
  config_.update.release.criticalBelow = 4;
  const ReleaseList list = plan();
  EXPECT_EQ(list.notes, "# New\n");
  EXPECT_EQ(list.rollout, (Rollout{1'000'000, 7, 100}));
  EXPECT_EQ(list.expires, 1'000'000 + 30 * 86'400);
  EXPECT_EQ(list.minimumSystem, "10.15");
  EXPECT_EQ(list.criticalBelow, 4);
  config_.update.release.rollout = "25%";
  EXPECT_EQ(plan().rollout, (Rollout{1'000'000, 0, 25}));
}

TEST_F(PlannedList, NamesItsSteppingStoneAsItLiesThere) {
  writeEarlier(earlier(3), "-3");
  config_.update.release.minimumFrom = 2;
  config_.update.release.steppingStone = 3;
  const ReleaseList list = plan();
  EXPECT_EQ(list.minimumFrom, 2);
  EXPECT_EQ(list.steppingStone, *folder().keptList(3));
  config_.update.release.steppingStone = 4;
  EXPECT_THAT(refusal(), HasSubstr("quillory.toml:31: error: there is no list of release 4 in "));
}

TEST_F(PlannedList, LeavesWithdrawnWhatWasWithdrawn) {
  ReleaseList bad = earlier(3);
  bad.withdrawn = {{kDigest, "2"}};
  writeEarlier(bad, "");
  EXPECT_EQ(plan().withdrawn, bad.withdrawn);
}

TEST_F(PlannedList, RefusesNotesThatNoListHolds) {
  config_.update.release.notes = "notes.md";
  EXPECT_THAT(refusal(), HasSubstr("quillory.toml:30: error: there is no file " +
                                   dir_ / "notes.md" + " [missing-file]"));
  writeFile(dir_ / "notes.md", std::string(64 * 1024, 'n'));
  EXPECT_EQ(refusal(), "");
  writeFile(dir_ / "notes.md", std::string(64 * 1024 + 1, 'n'));
  EXPECT_THAT(refusal(), HasSubstr("notes.md has more than 64 KiB [notes]"));
  writeFile(dir_ / "notes.md", std::string("a\0b", 3));
  EXPECT_THAT(refusal(), HasSubstr("notes.md is no text [notes]"));
}

}  // namespace
}  // namespace quillory::pack
