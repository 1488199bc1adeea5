#include "packager/commands/release_deltas.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/sha256.h"
#include "packager/commands/extract.h"
#include "packager/reading/plain_archive.h"
#include "tests/packager/plain_archives.h"
#include "tests/packager/released_project.h"
#include "update/delta.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Each version has a large file in which a little changes; the first is released.
class ReleaseDeltas : public ReleasedProject {
 protected:
  ReleaseDeltas() { releaseVersion(1); }

  void releaseVersion(int version, const std::string& update = "") {
    writeFile(project_ / "data", noise(1, 200'000) + std::to_string(version));
    release(config(version, "files = [\"data\"]\n", update));
  }
  static std::vector<std::string> basesOf(const ReleaseComponent& component) {
    std::vector<std::string> bases;
    for (const ReleaseDelta& delta : component.deltas) bases.push_back(delta.baseVersion);
    return bases;
  }
  ReleaseComponent application() const { return *componentOf(list(), kApplicationRole); }
};

TEST_F(ReleaseDeltas, LeadFromWhatWasReleasedToWhatIs) {
  EXPECT_TRUE(application().deltas.empty());
  releaseVersion(2);
  const ReleaseComponent app = application();
  ASSERT_THAT(basesOf(app), ElementsAre("1"));
  const ReleaseDelta& delta = app.deltas[0];
  EXPECT_EQ(delta.file.name, "Quillory-Hello-2-from-1-delta");
  EXPECT_EQ(delta.file.sha256, sha256Hex(readFile(releasePath(delta.file.name))));
  EXPECT_LT(delta.file.length, 4000);
  EXPECT_EQ(delta.baseSha256,
            listIn("Quillory-Hello-stable-releases-1").components.at(1).plainSha256);

  // As a client undoes it, from what the launcher has installed.
  pack::extractTo(releasePath("Quillory-Hello-1-archive.p2.l2"), project_ / "installed", "", false);
  update::DeltaTask task;
  task.delta = releasePath(delta.file.name);
  task.installedFolder = project_ / "installed";
  task.out = project_ / "restored";
  task.component = "Hello";
  task.from = "1";
  task.to = "2";
  task.restoredLength = app.plainLength;
  task.restoredSha256 = app.plainSha256;
  task.memoryLimit = delta.memory;
  const update::DeltaResult result = update::undoDelta(task);
  EXPECT_TRUE(result.isRestored()) << result.reason;
  EXPECT_EQ(sha256Hex(readFile(project_ / "restored")), app.plainSha256);
}

TEST_F(ReleaseDeltas, LeadFromSoManyEarlierVersionsStraightToTheNewest) {
  releaseVersion(2);
  releaseVersion(3);
  releaseVersion(4, "deltas = 2\n");
  EXPECT_THAT(basesOf(application()), ElementsAre("3", "2"));
  releaseVersion(5);
  EXPECT_THAT(basesOf(application()), ElementsAre("4", "3", "2", "1"));
  releaseVersion(6, "deltas = 0\n");
  EXPECT_TRUE(application().deltas.empty());
}

// The updater stays; a list of the same application is made again.
TEST_F(ReleaseDeltas, AreMadeOnceAndNamedAgain) {
  releaseVersion(2);
  const ReleaseComponent before = application();
  const auto written = fs::last_write_time(releasePath("Quillory-Hello-2-from-1-delta"));
  releaseVersion(2);
  EXPECT_EQ(list().number, 3);
  EXPECT_EQ(application(), before);
  EXPECT_EQ(fs::last_write_time(releasePath("Quillory-Hello-2-from-1-delta")), written);
  // One that is gone is made anew.
  fs::remove(releasePath("Quillory-Hello-2-from-1-delta"));
  releaseVersion(2);
  EXPECT_EQ(application(), before);
  EXPECT_TRUE(fs::exists(releasePath("Quillory-Hello-2-from-1-delta")));
}

TEST_F(ReleaseDeltas, AreLeftOutWhereTheyAreNotWorthWhile) {
  writeFile(project_ / "data", noise(2, 200'000));
  release(config(2, "files = [\"data\"]\n"));
  EXPECT_TRUE(application().deltas.empty());
  EXPECT_FALSE(fs::exists(releasePath("Quillory-Hello-2-from-1-delta")));
}

TEST_F(ReleaseDeltas, DoNotLeadFromAnArchiveThatIsNotTheOneReleased) {
  writeFile(releasePath("Quillory-Hello-1-archive.p2.l2"), "other");
  releaseVersion(2);
  EXPECT_TRUE(application().deltas.empty());
  EXPECT_THAT(said_.str(), HasSubstr("is not as it was released"));
  EXPECT_THAT(said_.str(), HasSubstr("[delta-base]"));
}

}  // namespace
}  // namespace quillory::testing
