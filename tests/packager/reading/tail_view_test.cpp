#include "packager/reading/tail_view.h"

#include <gtest/gtest.h>

#include "formats/markers.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;
using testing::TempDir;
using testing::writeFile;

class ReadTail : public ::testing::Test {
 protected:
  TempDir dir_;
  Findings findings_;
};

TEST_F(ReadTail, ReadsTheExampleOfThePage) {
  writeFile(dir_ / "Tail", pageExample("formats/wrapper-tail.md"));
  const std::optional<TailView> tail = readTail(dir_ / "Tail", false, findings_);
  ASSERT_TRUE(tail);
  EXPECT_TRUE(findings_.empty());
  EXPECT_EQ(tail->record("App Name"), "Demo");
  EXPECT_EQ(tail->record("Min Splash MS"), "1500");
  EXPECT_EQ(tail->record("Update URL"), "D");
  EXPECT_TRUE(tail->carriesApplication());
  EXPECT_TRUE(tail->carriesUpdater());
  EXPECT_FALSE(tail->carriesRuntime());
  EXPECT_FALSE(tail->key());
  ASSERT_EQ(tail->entries.size(), 1u);
  EXPECT_EQ(tail->entries[0].path, "lzma64");
  EXPECT_EQ(tail->updaterArchive(), nullptr);
}

TEST_F(ReadTail, FindsTheArchivesByTheirPlaces) {
  const std::string entries =
      records({"0", "lzma64", "1"}) + "x" + records({"0", "nativesplash.png", "0"}) +
      records({"0", "mine.p2", "1"}) + "x" +
      records({"0", "cacerts", "0", "0", "verpatch.exe", "0"}) + records({"0", "JRE.p2.l2", "1"}) +
      "x" + records({"0", "empty.p2", "0"}) + records({"0", "app.p2", "1"}) + "x";
  writeFile(dir_ / "Tail", records({"A", "1", "2", "3", "", "", "", "", "", "", ""}) + entries);
  const std::optional<TailView> tail = readTail(dir_ / "Tail", false, findings_);
  ASSERT_TRUE(tail && tail->updaterArchive() && tail->runtimeArchive() &&
              tail->applicationArchive());
  EXPECT_EQ(tail->updaterArchive()->path, "mine.p2");
  EXPECT_EQ(tail->runtimeArchive()->path, "JRE.p2.l2");
  EXPECT_EQ(tail->applicationArchive()->path, "app.p2");
}

TEST_F(ReadTail, LooksBehindTheMarkerInAnExecutable) {
  writeFile(dir_ / "launcher",
            std::string(100000, 'c') + tailMarker() + pageExample("formats/wrapper-tail.md"));
  EXPECT_EQ(readTail(dir_ / "launcher", true, findings_)->record("App Name"), "Demo");
  writeFile(dir_ / "launcher", "code");
  EXPECT_FALSE(readTail(dir_ / "launcher", true, findings_));
}

TEST_F(ReadTail, SurvivesATailThatIsCutAnywhere) {
  const std::string whole = pageExample("formats/wrapper-tail.md");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    findings_.clear();
    writeFile(dir_ / "Tail", whole.substr(0, at));
    readTail(dir_ / "Tail", false, findings_);
    EXPECT_TRUE(at == 39 || hasErrors(findings_)) << "39 is where the entries begin; cut at " << at;
  }
}

}  // namespace
}  // namespace quillory::pack
