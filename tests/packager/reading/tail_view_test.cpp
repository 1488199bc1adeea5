#include "packager/reading/tail_view.h"

#include <gtest/gtest.h>

#include "formats/markers.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;
using testing::rulesOf;
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
  EXPECT_EQ(tail->records.appName, "Demo");
  EXPECT_EQ(tail->records.minSplashMs, "1500");
  EXPECT_EQ(tail->records.updateUrl, "D");
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
  EXPECT_EQ(readTail(dir_ / "launcher", true, findings_)->records.appName, "Demo");
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

TEST_F(ReadTail, TellsWhereTheContentOfAnEntryLies) {
  const std::string before = std::string(70000, 'c') + tailMarker() +
                             records({"A", "1", "", "3", "", "", "", "", "", "", "D"});
  writeFile(dir_ / "launcher", before + records({"0", "lzma64", "4"}) + "tool");
  const std::optional<TailView> tail = readTail(dir_ / "launcher", true, findings_);
  ASSERT_TRUE(tail);
  EXPECT_TRUE(tail->inExecutable);
  ASSERT_EQ(tail->entries.size(), 1u);
  const FileRegion region = tail->regionOf(tail->entries[0]);
  EXPECT_EQ(region.path, dir_ / "launcher");
  EXPECT_EQ(region.offset, static_cast<std::int64_t>(before.size()) + 11);
  EXPECT_EQ(region.length, 4);
}

TEST_F(ReadTail, GivesAnEmptyTextForARecordThatItDoesNotHave) {
  writeFile(dir_ / "Tail", records({"A"}));
  const std::optional<TailView> tail = readTail(dir_ / "Tail", false, findings_);
  ASSERT_TRUE(tail);
  EXPECT_EQ(tail->records.appName, "A");
  EXPECT_EQ(tail->records.updateUrl, "");
  EXPECT_FALSE(tail->carriesApplication());
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
}

TEST_F(ReadTail, HasAKeyWhereTheRecordIsOne) {
  TailView tail;
  tail.file = "Tail";
  EXPECT_FALSE(tail.key());
  tail.records.signaturePublicKey = "00ff";
  try {
    tail.key();
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(e.finding().place.file, "Tail");
  }
  testing::openssl(
      {"rsa", "-in", testing::madeKey(), "-pubout", "-outform", "DER", "-out", dir_ / "der"});
  std::string hex;
  for (const unsigned char byte : testing::readFile(dir_ / "der")) {
    static constexpr char kDigits[] = "0123456789abcdef";
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 15];
  }
  tail.records.signaturePublicKey = hex;
  ASSERT_TRUE(tail.key());
  EXPECT_EQ(tail.key()->fingerprint(), PublicKey::load(testing::madeKey()).fingerprint());
}

TEST_F(ReadTail, LooksForTheArchivesOfEachPartAtItsPlacesOnly) {
  const ListedEntry tool{0, "lzma64", 4, 0}, empty{0, "x.p2", 0, 0}, archive{0, "a.p2", 9, 0};
  TailView tail;
  tail.records.appVersion = "1";
  tail.records.guVersion = "3";
  // The tool, the picture, three entries of the updater, two of the application.
  tail.entries = {archive, archive, tool, empty, archive, tool, archive};
  EXPECT_EQ(tail.updaterArchive(), &tail.entries[4]);
  EXPECT_EQ(tail.runtimeArchive(), nullptr);
  EXPECT_EQ(tail.applicationArchive(), &tail.entries[6]);
  tail.entries = {archive, archive, tool, empty, tool, archive, archive, archive};
  EXPECT_EQ(tail.updaterArchive(), nullptr) << "none among its three";
  EXPECT_EQ(tail.applicationArchive(), &tail.entries[5]);
  tail.records.jreVersion = "2";
  EXPECT_EQ(tail.runtimeArchive(), &tail.entries[5]);
  EXPECT_EQ(tail.applicationArchive(), &tail.entries[6]);
  tail.entries[5] = tool;
  EXPECT_EQ(tail.runtimeArchive(), nullptr);
  tail.entries.resize(6);
  EXPECT_EQ(tail.applicationArchive(), nullptr);
  tail.records.appVersion = "";
  tail.records.guVersion = "";
  tail.entries = {archive, archive, archive, archive, archive, archive, archive};
  EXPECT_EQ(tail.updaterArchive(), nullptr);
  EXPECT_EQ(tail.applicationArchive(), nullptr);
}

TEST_F(ReadTail, StopsAtAnEntryThatIsWrong) {
  writeFile(dir_ / "Tail", records({"A", "", "", "", "", "", "", "", "", "", ""}) +
                               records({"0", "../up", "1"}) + "x" + records({"0", "b", "0"}));
  EXPECT_EQ(readTail(dir_ / "Tail", false, findings_)->entries.size(), 1u);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"path"});
}

TEST(Entries, AreCompressedOrArchivesByTheirNames) {
  static constexpr struct {
    const char* path;
    bool compressed;
    bool archive;
  } kCases[] = {{"a.p2", false, true},  {"a.p2.l2", true, true}, {"a.l2", true, false},
                {"a", false, false},    {"p2", false, false},    {"a.p2.l2.old", false, false},
                {"a.P2", false, false}, {"a.p2x", false, false}};
  for (const auto& [path, compressed, archive] : kCases) {
    for (const std::int64_t type : {std::int64_t{0}, kPack200Type}) {
      EXPECT_EQ(isCompressed({type, path, 1, 0}), compressed) << path;
      EXPECT_EQ(isArchive({type, path, 1, 0}), archive) << path;
    }
    EXPECT_FALSE(isCompressed({kFolderType, path, 0, 0}));
    EXPECT_FALSE(isArchive({kFolderType, path, 0, 0}));
  }
}

}  // namespace
}  // namespace quillory::pack
