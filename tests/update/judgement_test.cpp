#include "update/judgement.h"

#include <gtest/gtest.h>

#include "formats/archive_identity.h"
#include "tests/update/release_folder.h"
#include "update/chance.h"
#include "update/system_version.h"

namespace quillory::testing {
namespace {

using update::Admission;
using update::admissionTo;
using update::isDrawn;
using update::ListQuestion;
using update::meetsMinimum;
using update::ReleaseQuestion;
using update::shareAt;
using update::whyNotTaken;

ReleaseList demoList() {
  ReleaseComponent application;
  application.role = kApplicationRole;
  application.name = "Demo";
  application.version = "4";
  return ReleaseFolder::list(7, {application});
}

const ListQuestion kQuestion{"Demo", kStandardChannel, 6, 0};

TEST(WhyNotTaken, HasNothingAgainstANewerListForThisInstallation) {
  EXPECT_EQ(whyNotTaken(demoList(), kQuestion), "");
}

TEST(WhyNotTaken, RefusesTheListsOfOthers) {
  ReleaseList list = demoList();
  list.application = "Other";
  EXPECT_EQ(whyNotTaken(list, kQuestion), "it is of the application Other");
  list = demoList();
  list.channel = "beta";
  EXPECT_EQ(whyNotTaken(list, kQuestion), "it is of the channel beta");
  list = demoList();
  list.platform = thisPlatform().starts_with("linux") ? "macos" : "linux";
  EXPECT_EQ(whyNotTaken(list, kQuestion), "it is for " + list.platform);
}

TEST(WhyNotTaken, RefusesWhatIsOlderThanWhatWasSeen) {
  EXPECT_EQ(whyNotTaken(demoList(), {"Demo", kStandardChannel, 8, 0}),
            "it is of release 7, and release 8 has been seen already");
  EXPECT_EQ(whyNotTaken(demoList(), {"Demo", kStandardChannel, 7, kIssued + 7}), "");
  EXPECT_EQ(whyNotTaken(demoList(), {"Demo", kStandardChannel, 7, kIssued + 8}),
            "it was issued before the one that has been seen already");
}

TEST(IsExpired, IsSoBehindItsLastSecond) {
  const ReleaseList list = demoList();
  EXPECT_FALSE(update::isExpired(list, list.expires));
  EXPECT_TRUE(update::isExpired(list, list.expires + 1));
}

TEST(ShareAt, GrowsFromDayToDay) {
  const Rollout week{.start = kIssued, .days = 7, .percent = 100};
  EXPECT_EQ(shareAt(week, kIssued - 1), 0);
  EXPECT_EQ(shareAt(week, kIssued), 0);
  EXPECT_EQ(shareAt(week, kIssued + 7 * kDay / 4), 2500);
  EXPECT_EQ(shareAt(week, kIssued + 7 * kDay), 10000);
  EXPECT_EQ(shareAt(week, kIssued + 700 * kDay), 10000);
  EXPECT_EQ(shareAt({.start = kIssued, .days = 0, .percent = 25}, kIssued), 2500);
  EXPECT_EQ(shareAt({.start = kIssued, .days = 10, .percent = 50}, kIssued + 5 * kDay), 2500);
  EXPECT_EQ(shareAt({}, kIssued), 10000);
}

TEST(ShareAt, HoldsForTheLongestRollout) {
  const Rollout longest{.start = 0, .days = kMaxRolloutDays, .percent = 100};
  EXPECT_EQ(shareAt(longest, 999'999'999'999'999), 10000);
}

TEST(IsDrawn, TakesAsManyAsItSays) {
  int in = 0;
  for (int i = 0; i < 4000; ++i) in += isDrawn(update::newDraw(), "7", 2500) ? 1 : 0;
  EXPECT_NEAR(in, 1000, 150);
}

TEST(IsDrawn, IsWhatItsPageSays) {
  // SHA-256 of "00112233445566778899aabbccddeeff:7" begins with 67a2d6f58235c6c4, by another tool.
  const std::string draw = "00112233445566778899aabbccddeeff";
  EXPECT_FALSE(isDrawn(draw, "7", 7636));
  EXPECT_TRUE(isDrawn(draw, "7", 7637));
}

TEST(IsDrawn, KeepsWhoIsIn) {
  for (int i = 0; i < 200; ++i) {
    const std::string draw = update::newDraw();
    if (isDrawn(draw, "7", 1000)) {
      EXPECT_TRUE(isDrawn(draw, "7", 5000));
    }
    EXPECT_FALSE(isDrawn(draw, "7", 0));
    EXPECT_TRUE(isDrawn(draw, "7", 10000));
  }
}

// Nobody is drawn before the rollout begins.
ReleaseQuestion earlyBird(long installed) {
  return {.installed = installed, .draw = "0", .systemVersion = "2.36", .now = kIssued};
}
ReleaseList rolledOut() {
  ReleaseList list = demoList();
  list.rollout = {.start = kIssued, .days = 7, .percent = 100};
  return list;
}

TEST(AdmissionTo, WaitsForTheRollout) {
  EXPECT_EQ(admissionTo(demoList(), earlyBird(3)), Admission::kIn);
  EXPECT_EQ(admissionTo(rolledOut(), earlyBird(3)), Admission::kLater);
}

// Who is offered a version at a quarter is offered it still when its list is issued anew, and when
// the quarter becomes a half: it is not drawn again.
TEST(AdmissionTo, LeavesWhoWasDrawnAmongThemWhenTheListIsIssuedAnew) {
  ReleaseList quarter = demoList();
  quarter.rollout = {.start = kIssued, .days = 0, .percent = 25};
  ReleaseList half = quarter;
  half.number += 1;
  half.rollout.percent = 50;
  int inQuarter = 0;
  int inHalf = 0;
  for (int i = 0; i < 400; ++i) {
    ReleaseQuestion question = earlyBird(3);
    question.draw = update::newDraw();
    const bool isFirst = admissionTo(quarter, question) == Admission::kIn;
    const bool isThen = admissionTo(half, question) == Admission::kIn;
    EXPECT_TRUE(!isFirst || isThen);
    inQuarter += isFirst ? 1 : 0;
    inHalf += isThen ? 1 : 0;
  }
  EXPECT_NEAR(inQuarter, 100, 50);
  EXPECT_NEAR(inHalf, 200, 60);
}

TEST(AdmissionTo, LetsNobodyWaitWhoNeedsIt) {
  EXPECT_EQ(admissionTo(rolledOut(), earlyBird(-1)), Admission::kIn);
  ReleaseList list = rolledOut();
  list.criticalBelow = 4;
  EXPECT_EQ(admissionTo(list, earlyBird(3)), Admission::kIn);
  EXPECT_EQ(admissionTo(list, earlyBird(4)), Admission::kLater);
  ReleaseQuestion withdrawn = earlyBird(3);
  withdrawn.isWithdrawn = true;
  EXPECT_EQ(admissionTo(rolledOut(), withdrawn), Admission::kIn);
}

TEST(AdmissionTo, KeepsToThePin) {
  ReleaseQuestion pinned = earlyBird(3);
  pinned.pin = "3";
  EXPECT_EQ(admissionTo(demoList(), pinned), Admission::kPinned);
  pinned.pin = "4";
  EXPECT_EQ(admissionTo(demoList(), pinned), Admission::kIn);
}

TEST(AdmissionTo, AsksForTheSystemAndForTheVersionBelow) {
  ReleaseList list = demoList();
  list.minimumSystem = "2.40";
  EXPECT_EQ(admissionTo(list, earlyBird(3)), Admission::kSystemTooOld);
  list = demoList();
  list.minimumFrom = 3;
  EXPECT_EQ(admissionTo(list, earlyBird(2)), Admission::kStepFirst);
  EXPECT_EQ(admissionTo(list, earlyBird(3)), Admission::kIn);
  EXPECT_EQ(admissionTo(list, earlyBird(-1)), Admission::kIn);
}

TEST(MeetsMinimum, ComparesNumberByNumber) {
  EXPECT_TRUE(meetsMinimum("2.36", ""));
  EXPECT_TRUE(meetsMinimum("2.36", "2.36"));
  EXPECT_TRUE(meetsMinimum("2.36", "2.4"));
  EXPECT_FALSE(meetsMinimum("2.36", "2.40"));
  EXPECT_TRUE(meetsMinimum("14.2.1", "14"));
  EXPECT_FALSE(meetsMinimum("14", "14.0.1"));
  EXPECT_TRUE(meetsMinimum("14", "14.0"));
  EXPECT_FALSE(meetsMinimum("", "1"));
  EXPECT_FALSE(update::systemVersion().empty());
}

}  // namespace
}  // namespace quillory::testing
