#include "packager/writing/delta_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formats/release_list_format.h"
#include "packager/report/findings.h"
#include "tests/packager/plain_archives.h"

namespace quillory::pack {
namespace {

using testing::ArchiveFiles;
using testing::archiveOf;
using ::testing::ElementsAre;
using testing::endOfArchive;
using testing::fileEntry;
using ::testing::IsEmpty;
using testing::noise;
using testing::TempDir;
using testing::writeFile;

constexpr std::int64_t kMuch = kMaxDeltaWindow;

class PlanDelta : public ::testing::Test {
 protected:
  DeltaPlan plan(const std::string& older, const std::string& newer,
                 std::string_view role = kApplicationRole, std::int64_t mostMemory = kMuch) {
    writeFile(dir_ / "old.p2", older);
    writeFile(dir_ / "new.p2", newer);
    return planDelta(dir_ / "old.p2", dir_ / "new.p2", role, mostMemory);
  }

  static std::vector<std::string> copied(const DeltaPlan& plan) {
    std::vector<std::string> paths;
    for (const PlannedCopy& copy : plan.copies) paths.push_back(copy.file.path);
    return paths;
  }
  static std::vector<std::string> dictionary(const DeltaPlan& plan) {
    std::vector<std::string> paths;
    for (const PlannedBase& base : plan.dictionary) paths.push_back(base.file.path);
    return paths;
  }

  const std::string one_ = noise(1, 1000);
  const std::string two_ = noise(2, 2000);
  const std::string three_ = noise(3, 3000);
  TempDir dir_;
};

TEST_F(PlanDelta, CopiesWhatIsTheSameAndKeepsTheRestForItsDictionary) {
  const std::string older = archiveOf({{"a", one_}, {"b", two_}, {"gone", three_}});
  const std::string newer = archiveOf({{"a", one_}, {"b", two_ + "!"}, {"new", "x" + one_}});
  const DeltaPlan made = plan(older, newer);
  EXPECT_THAT(copied(made), ElementsAre("a"));
  EXPECT_THAT(dictionary(made), ElementsAre("b", "gone"));
  EXPECT_EQ(made.dictionaryLength, 5000);
  EXPECT_EQ(made.streamLength, static_cast<std::int64_t>(newer.size()) - 1000);
  EXPECT_EQ(made.window(), made.dictionaryLength + made.streamLength);
  EXPECT_EQ(newer.substr(static_cast<std::size_t>(made.copies[0].contentAt), 1000), one_);
  EXPECT_EQ(older.substr(static_cast<std::size_t>(made.dictionary[0].contentAt), 2000), two_);
}

TEST_F(PlanDelta, FindsWhatHasAnotherNameNow) {
  const DeltaPlan made = plan(archiveOf({{"lib-1.jar", one_}}), archiveOf({{"lib-2.jar", one_}}));
  EXPECT_THAT(copied(made), ElementsAre("lib-1.jar"));
  EXPECT_THAT(dictionary(made), IsEmpty());
  EXPECT_EQ(made.window(), kMinDeltaWindow);
}

TEST_F(PlanDelta, CopiesFromTheSamePlaceWhereItCan) {
  const ArchiveFiles twins = {{"a", one_}, {"b", one_}, {"c", one_}};
  EXPECT_THAT(copied(plan(archiveOf(twins), archiveOf(twins))), ElementsAre("a", "b", "c"));
}

TEST_F(PlanDelta, LeavesShortFilesAlone) {
  const ArchiveFiles files = {{"511", noise(1, 511)}, {"512", noise(2, 512)}};
  const DeltaPlan made = plan(archiveOf(files), archiveOf(files));
  EXPECT_THAT(copied(made), ElementsAre("512"));
  EXPECT_THAT(dictionary(made), IsEmpty());
}

TEST_F(PlanDelta, TrustsNoPathThatAnInstallationHasOtherwise) {
  const std::string older =
      fileEntry("twice", one_) + fileEntry("twice", two_) + fileEntry("packed", three_, "2") +
      fileEntry("a//b", noise(4, 600)) + fileEntry("line\nbreak", noise(5, 600)) +
      fileEntry("\xFF", noise(6, 600)) + fileEntry("good", noise(7, 600)) + endOfArchive();
  const DeltaPlan same = plan(older, older);
  EXPECT_THAT(copied(same), ElementsAre("good"));
  EXPECT_THAT(dictionary(same), IsEmpty());
  const DeltaPlan other = plan(older, archiveOf({{"new", one_ + two_}}));
  EXPECT_THAT(copied(other), IsEmpty());
  EXPECT_THAT(dictionary(other), ElementsAre("good"));
}

TEST_F(PlanDelta, LeavesOutWhatTheInstallationOfARuntimeChanges) {
  const ArchiveFiles files = {{"Contents/Home/lib/modules", one_},
                              {"Contents/Home/lib/security/cacerts", two_},
                              {"Contents/Home/lib/server/classes.jsa", noise(4, 700)},
                              {"Contents/MacOS/libjli.dylib", three_}};
  EXPECT_THAT(copied(plan(archiveOf(files), archiveOf(files), kRuntimeRole)),
              ElementsAre("Contents/Home/lib/modules"));
  EXPECT_EQ(copied(plan(archiveOf(files), archiveOf(files), kApplicationRole)).size(), 4u);
}

TEST_F(PlanDelta, DropsWhatIsGoneWhereMemoryIsShort) {
  const std::string older = archiveOf({{"a", two_}, {"gone", three_}});
  const std::string newer = archiveOf({{"a", two_ + "!"}});
  EXPECT_THAT(dictionary(plan(older, newer, kApplicationRole, 6000)), ElementsAre("a"));
  // And says by its window that even that is too much.
  const DeltaPlan tight = plan(older, newer, kApplicationRole, 4000);
  EXPECT_THAT(dictionary(tight), ElementsAre("a"));
  EXPECT_GT(tight.window(), 4000);
}

TEST_F(PlanDelta, RefusesArchivesThatAreCut) {
  const std::string whole = archiveOf({{"a", one_}});
  EXPECT_THROW(plan(whole.substr(0, 500), whole), PackError);
  EXPECT_THROW(plan(whole, whole.substr(0, 500)), PackError);
  EXPECT_THROW(planDelta(dir_ / "missing", dir_ / "new.p2", kApplicationRole, kMuch), PackError);
}

}  // namespace
}  // namespace quillory::pack
