#include "packager/reading/archive_listing.h"

#include <gtest/gtest.h>

#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

class ListArchive : public ::testing::Test {
 protected:
  ArchiveListing list(const std::string& bytes) {
    findings_.clear();
    writeFile(dir_ / "file", bytes);
    RecordInput input(dir_ / "file", findings_);
    return listArchive(input, findings_, dir_ / "file");
  }

  TempDir dir_;
  Findings findings_;
};

TEST_F(ListArchive, ReadsTheExamplesOfThePage) {
  const ArchiveListing plain = list(pageExample("formats/archive.md", 1));
  ASSERT_EQ(plain.entries.size(), 2u);
  EXPECT_EQ(plain.entries[0].type, kFolderType);
  EXPECT_EQ(plain.entries[0].path, "lib");
  EXPECT_EQ(plain.entries[1].path, "lib/hello.txt");
  EXPECT_EQ(plain.entries[1].length, 5);
  EXPECT_EQ(plain.entries[1].contentAt, 24);
  EXPECT_FALSE(plain.signature);
  EXPECT_TRUE(findings_.empty());
  const ArchiveListing withSignature = list(pageExample("formats/archive.md", 2));
  ASSERT_TRUE(withSignature.signature);
  EXPECT_EQ(withSignature.signature->offset, 29);
  EXPECT_EQ(withSignature.signature->claimedOffset, 29);
  EXPECT_EQ(withSignature.signature->hex.substr(0, 8), "0f08151f");
  EXPECT_TRUE(findings_.empty());
}

TEST_F(ListArchive, StopsAtTheSignatureAndAtTheEnd) {
  EXPECT_EQ(list(records({""}) + records({"0", "never", "0"})).entries.size(), 0u);
  const std::string block = records({"0", "qyArcSpBlock_DigitalSignature1", "1", "0", "aa"});
  EXPECT_EQ(list(block + records({"0", "never", "0"})).entries.size(), 0u);
  EXPECT_EQ(list(records({"0", "qyArcSpBlock_DigitalSignature1", "0", ""})).entries.size(), 1u)
      << "a block of length 0 is an empty file";
}

TEST_F(ListArchive, NoticesWhatTheLauncherWouldRefuseOrWaitFor) {
  list(records({"0", "../up", "1"}) + "x" + records({""}));
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"path"});
  list(records({"0", "a", "-1", ""}));
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"length"});
  EXPECT_EQ(findings_.front().place.line, 0U) << "an archive has no lines";
  list(records({"0", "a", "10"}) + "short");
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
}

TEST_F(ListArchive, SurvivesAnArchiveThatIsCutOrChangedAnywhere) {
  const std::string whole = pageExample("formats/archive.md", 2);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    list(whole.substr(0, at));
    EXPECT_TRUE(at == 29 || hasErrors(findings_) || at == 0 || at == 6 || at == 2)
        << "cut at " << at;
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0x11);
    list(changed);
  }
}

TEST_F(ListArchive, TellsWhereThingsStand) {
  const std::string folder = records({"1", "lib"});
  const std::string file = records({"0", "lib/a", "3"}) + "abc";
  const ArchiveListing listing = list(folder + file + records({""}) + "behind");
  ASSERT_EQ(listing.entries.size(), 2u);
  EXPECT_EQ(listing.entries[0].length, 0);
  EXPECT_EQ(listing.entries[0].contentAt, static_cast<std::int64_t>(folder.size()));
  EXPECT_EQ(listing.entries[1].contentAt, static_cast<std::int64_t>((folder + file).size()) - 3);
  EXPECT_EQ(listing.end, static_cast<std::int64_t>((folder + file).size()) + 1);
  EXPECT_EQ(listing.find("lib/a"), &listing.entries[1]);
  EXPECT_EQ(listing.find("lib/"), nullptr);
}

TEST_F(ListArchive, EndsBehindTheSignature) {
  const std::string block = records({"0", "qyArcSpBlock_DigitalSignature1", "1", "77", "aabb"});
  const ArchiveListing listing = list(records({"1", "lib"}) + block + "behind");
  ASSERT_TRUE(listing.signature);
  EXPECT_EQ(listing.signature->offset, 6);
  EXPECT_EQ(listing.signature->claimedOffset, 77);
  EXPECT_EQ(listing.signature->hex, "aabb");
  EXPECT_EQ(listing.end, static_cast<std::int64_t>(6 + block.size()));
}

TEST_F(ListArchive, StopsBehindAnEntryThatIsWrong) {
  for (const std::string& wrong : {records({"0", "../up", "1"}) + "x", records({"0", "a", "-1"})}) {
    const ArchiveListing listing = list(wrong + records({"1", "lib", ""}));
    EXPECT_EQ(listing.entries.size(), 1u);
    EXPECT_TRUE(hasErrors(findings_));
  }
}

TEST_F(ListArchive, TakesContentThatEndsWithTheFile) {
  writeFile(dir_ / "file", records({"0", "a", "3"}) + "abc");
  RecordInput input(dir_ / "file", findings_);
  const std::optional<ListedEntry> entry = readListedEntry(input, findings_, dir_ / "file");
  ASSERT_TRUE(entry);
  EXPECT_TRUE(input.atEnd());
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{});
  writeFile(dir_ / "file", records({"0", "a", "3"}) + "ab");
  RecordInput cut(dir_ / "file", findings_);
  readListedEntry(cut, findings_, "the archive");
  ASSERT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
  EXPECT_EQ(findings_[0].place.file, "the archive");
}

TEST_F(ListArchive, TakesTheFirstEntryForWhatTheArchiveSaysThatItIs) {
  const auto identityIn = [&](const std::string& bytes) {
    const ArchiveListing listing = list(bytes);
    EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{});
    return (listing.identity ? asText(*listing.identity) : "none") + ", " +
           std::to_string(listing.entries.size());
  };
  const std::string path = "qyArcSpBlock_Component1;JRE;17;linux";
  const std::string other = records({"0", "a", "0"});
  EXPECT_EQ(identityIn(records({"0", path, "0"}) + other + records({""})), "JRE 17 (linux), 1");
  EXPECT_EQ(identityIn(other + records({"0", path, "0", ""})), "none, 2") << "the second entry";
  EXPECT_EQ(identityIn(records({"0", path, "0", "0", path, "0", ""})), "JRE 17 (linux), 1");
  EXPECT_EQ(identityIn(records({"0", path, "1"}) + "x" + records({""})), "none, 1") << "a file";
  EXPECT_EQ(identityIn(records({"0", path + ";more", "0", ""})), "none, 1");
}

}  // namespace
}  // namespace quillory::pack
