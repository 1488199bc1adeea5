// What reads finished files for people: records, archives, tails, parameters.
#include <gtest/gtest.h>

#include "formats/markers.h"
#include "packager/reading/archive_listing.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/params_view.h"
#include "packager/reading/plain_archive.h"
#include "packager/reading/tail_view.h"
#include "packager/writing/tail_writer.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/project_fixture.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::hasRule;
using testing::pageExample;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

class Readers : public ::testing::Test {
 protected:
  RecordInput open(const std::string& bytes) {
    writeFile(dir_ / "file", bytes);
    return RecordInput(dir_ / "file", findings_);
  }

  ArchiveListing list(const std::string& bytes) {
    findings_.clear();
    RecordInput input = open(bytes);
    return listArchive(input, findings_, dir_ / "file");
  }

  TempDir dir_;
  Findings findings_;
};

TEST_F(Readers, RecordInputReadsTextsAndNumbersAsTheLauncherDoes) {
  RecordInput input = open(records({"abc", "", "-5", "12abc", "1", "x"}));
  EXPECT_EQ(input.text("a"), "abc");
  EXPECT_EQ(input.text("b"), "");
  EXPECT_EQ(input.number("c"), -5);
  EXPECT_EQ(input.number("d"), 12);
  EXPECT_TRUE(input.boolean("e"));
  EXPECT_FALSE(input.boolean("f"));
  EXPECT_TRUE(input.atEnd());
  EXPECT_EQ(rulesOf(findings_), (std::vector<std::string>{"number", "number"}));
  EXPECT_EQ(findings_[0].what, "the record \"d\" at 8 is no number: \"12abc\"");
}

TEST_F(Readers, RecordInputCutsALongValueWhereTheLauncherDoesAndSaysSo) {
  RecordInput input = open(std::string(1023, 'x') + '\0' + records({"next"}));
  EXPECT_EQ(input.text("Path"), std::string(1023, 'x'));
  EXPECT_EQ(input.text("Then"), "") << "the terminator that was left";
  EXPECT_EQ(input.text("Next"), "next");
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"record-limit"});
}

TEST_F(Readers, RecordInputReportsTheEndOfTheFileOnce) {
  RecordInput input = open("abc");
  EXPECT_EQ(input.text("a"), "abc");
  EXPECT_EQ(input.text("b"), "");
  EXPECT_EQ(input.number("c"), 0);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
  EXPECT_EQ(findings_[0].what, "the file ends in the record \"a\"");
}

TEST_F(Readers, RecordInputFindsAMarkerWhereverItStands) {
  for (const std::size_t before : {0u, 1u, 63u, 65535u, 65536u, 65500u, 200000u}) {
    RecordInput input = open(std::string(before, 'x') + "MARKER" + "rest");
    ASSERT_TRUE(input.findMarker("MARKER")) << before;
    EXPECT_EQ(input.bytes(10), "rest") << before;
  }
  RecordInput none = open(std::string(70000, 'M'));
  EXPECT_FALSE(none.findMarker("MARKER"));
}

TEST_F(Readers, ListArchiveReadsTheExamplesOfThePage) {
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

TEST_F(Readers, ListArchiveStopsAtTheSignatureAndAtTheEnd) {
  EXPECT_EQ(list(records({""}) + records({"0", "never", "0"})).entries.size(), 0u);
  const std::string block = records({"0", "qyArcSpBlock_DigitalSignature1", "1", "0", "aa"});
  EXPECT_EQ(list(block + records({"0", "never", "0"})).entries.size(), 0u);
  EXPECT_EQ(list(records({"0", "qyArcSpBlock_DigitalSignature1", "0", ""})).entries.size(), 1u)
      << "a block of length 0 is an empty file";
}

TEST_F(Readers, ListArchiveNoticesWhatTheLauncherWouldRefuseOrWaitFor) {
  list(records({"0", "../up", "1"}) + "x" + records({""}));
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"path"});
  list(records({"0", "a", "-1", ""}));
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"length"});
  list(records({"0", "a", "10"}) + "short");
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
}

TEST_F(Readers, ListArchiveSurvivesAnArchiveThatIsCutOrChangedAnywhere) {
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

TEST_F(Readers, PlainArchiveDecompressesPartOfAFile) {
  const std::string bytes = pageExample("formats/archive.md", 1);
  StringSink packed;
  LzmaSinkAdapter lzma(1, packed);
  lzma.write(bytes);
  lzma.finish();
  writeFile(dir_ / "tail", "before" + packed.bytes() + "behind");
  const PlainArchive archive({dir_ / "tail", 6, static_cast<std::int64_t>(packed.bytes().size())},
                             true);
  const ArchiveListing listing = archive.list(findings_, "name");
  ASSERT_EQ(listing.entries.size(), 2u);
  EXPECT_EQ(archive.contentOf(listing.entries[1], 100), "hello");
  EXPECT_THROW(PlainArchive({dir_ / "tail", 6, 20}, true), PackError);
  EXPECT_THROW(PlainArchive({dir_ / "tail", 0, 6}, true), PackError);
}

TEST_F(Readers, ReadTailReadsTheExampleOfThePage) {
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

TEST_F(Readers, ReadTailFindsTheArchivesByTheirPlaces) {
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

TEST_F(Readers, ReadTailLooksBehindTheMarkerInAnExecutable) {
  writeFile(dir_ / "launcher",
            std::string(100000, 'c') + tailMarker() + pageExample("formats/wrapper-tail.md"));
  EXPECT_EQ(readTail(dir_ / "launcher", true, findings_)->record("App Name"), "Demo");
  writeFile(dir_ / "launcher", "code");
  EXPECT_FALSE(readTail(dir_ / "launcher", true, findings_));
}

TEST_F(Readers, ReadTailSurvivesATailThatIsCutAnywhere) {
  const std::string whole = pageExample("formats/wrapper-tail.md");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    findings_.clear();
    writeFile(dir_ / "Tail", whole.substr(0, at));
    readTail(dir_ / "Tail", false, findings_);
    EXPECT_TRUE(at == 39 || hasErrors(findings_)) << "39 is where the entries begin; cut at " << at;
  }
}

TEST_F(Readers, ReadParamsReadsTheExampleOfThePageAndWhatStandsBefore) {
  writeFile(dir_ / "params",
            "text before" + paramsMarker() + pageExample("formats/parameters-file.md", 1));
  const std::optional<ParamsView> params = readParams(dir_ / "params", findings_);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->before, "text before");
  EXPECT_EQ(params->parameters, (Parameters{{"jre_name", "JRE"}, {"show_no_ui", "true"}}));
  EXPECT_EQ(*params->find("jre_name"), "JRE");
  EXPECT_EQ(params->find("missing"), nullptr);
  EXPECT_TRUE(findings_.empty());
}

TEST_F(Readers, ReadParamsNoticesACountThatPromisesTooMuch) {
  writeFile(dir_ / "params", paramsMarker() + records({"2000000000", "a", "b"}));
  EXPECT_EQ(readParams(dir_ / "params", findings_)->parameters.size(), 1u);
  EXPECT_EQ(findingOf(findings_, "cut-short").what,
            "the file promises 2000000000 parameters and holds 1");
}

TEST_F(Readers, ReadParamsNeedsTheMarker) {
  writeFile(dir_ / "params", "no marker");
  EXPECT_FALSE(readParams(dir_ / "params", findings_));
}

TEST(PlistText, FindsTextsAndUndoesEscapes) {
  const std::string plist =
      "<dict>\n<key>A</key>\n\t<string>x &amp; &lt;y&gt; &quot;&apos;</string><key>B</key><true/>";
  EXPECT_EQ(plistText(plist, "A"), "x & <y> \"'");
  EXPECT_EQ(plistText(plist, "C"), "");
  EXPECT_EQ(plistText("<key>A</key><string>open", "A"), "");
}

}  // namespace
}  // namespace quillory::pack
