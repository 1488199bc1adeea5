// The writers of small files, against bytes written by hand: here, and in the pages of
// docs/formats.
#include <gtest/gtest.h>

#include "formats/markers.h"
#include "packager/commands/release_files.h"
#include "packager/report/findings.h"
#include "packager/writing/launch_file_writer.h"
#include "packager/writing/params_writer.h"
#include "packager/writing/record_writer.h"
#include "packager/writing/tail_writer.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::TempDir;
using testing::writeFile;

TEST(RecordWriter, EndsEachValueWithAZeroByte) {
  StringSink bytes;
  RecordWriter writer(bytes);
  writer.text("a", "abc");
  writer.text("b", "");
  writer.number("c", -5);
  writer.boolean("d", true);
  writer.boolean("e", false);
  EXPECT_EQ(bytes.bytes(), records({"abc", "", "-5", "1", "0"}));
}

TEST(RecordWriter, TakesTheLongestValueThatReadersDoNotCut) {
  StringSink bytes;
  RecordWriter writer(bytes);
  writer.text("x", std::string(1022, 'x'));
  EXPECT_EQ(bytes.bytes().size(), 1023u);
  EXPECT_THROW(writer.text("x", std::string(1023, 'x')), PackError);
  writer.text("x", std::string(4998, 'x'), kUpdateUrlCapacity);
  EXPECT_THROW(writer.text("x", std::string(4999, 'x'), kUpdateUrlCapacity), PackError);
}

TEST(RecordWriter, RefusesAZeroByteInsideAValueAndNamesTheRecord) {
  StringSink bytes;
  try {
    RecordWriter(bytes).text("App Name", std::string("a\0b", 3));
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "\"App Name\" holds a zero byte, which would end it");
  }
  EXPECT_EQ(bytes.bytes(), "");
}

TEST(WriteTail, GivesTheExampleOfThePage) {
  TempDir dir;
  writeFile(dir / "tool", "#!");
  StringSink bytes;
  writeTailRecords(bytes, {"Demo", "3", "", "7", "1500", "", "1", "perm_user", "-quiet", "8", "D"});
  writeTailEntry(bytes, {"lzma64", dir / "tool"});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/wrapper-tail.md"));
}

TEST(WriteTail, WritesAnEntryWithoutASourceAsAnEmptyFile) {
  StringSink bytes;
  writeTailEntry(bytes, {"verpatch.exe", ""});
  EXPECT_EQ(bytes.bytes(), records({"0", "verpatch.exe", "0"}));
}

TEST(WriteTail, HasRoomForLongKeysAndUrls) {
  StringSink bytes;
  TailRecords tail;
  tail.signaturePublicKey = std::string(8190, 'a');
  tail.updateUrl = std::string(4998, 'u');
  writeTailRecords(bytes, tail);
  tail.signaturePublicKey += 'a';
  EXPECT_THROW(writeTailRecords(bytes, tail), PackError);
}

TEST(TailMarker, HasTheBytesOfThePage) {
  EXPECT_EQ(tailMarker(), pageExample("formats/record-stream.md", 1));
}

TEST(WriteParameters, PutsTheExampleOfThePageBehindTheMarker) {
  StringSink bytes;
  writeParameters(bytes, {{"jre_name", "JRE"}, {"show_no_ui", "true"}});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/record-stream.md", 2) +
                               pageExample("formats/parameters-file.md", 1));
}

TEST(WriteParameters, WritesACountOfZeroWithoutPairs) {
  StringSink bytes;
  writeParameters(bytes, {});
  EXPECT_EQ(bytes.bytes(), paramsMarker() + records({"0"}));
}

TEST(WriteParameters, HasRoomForLongValues) {
  StringSink bytes;
  writeParameters(bytes, {{"splash_image", std::string(199998, 'A')}});
  EXPECT_THROW(writeParameters(bytes, {{"splash_image", std::string(199999, 'A')}}), PackError);
}

TEST(WriteLaunchFile, GivesTheExampleOfThePage) {
  LaunchFile file;
  file.mainClass = "com.example.hello.Hello";
  file.appName = "hello";
  file.maximumHeap = 256;
  file.classPath = {"hello.jar", "lib/a.jar"};
  file.arguments = {"--console"};
  EXPECT_EQ(launchFileBytes(file), pageExample("formats/launch-file.md"));
}

TEST(WriteLaunchFile, WritesEveryRecordInItsPlace) {
  LaunchFile file{"A", "B", "C", "D", true, 1, 2, {"E"}, {"F", "G"}, "H", {"I"}, true};
  EXPECT_EQ(launchFileBytes(file), records({"6", "A", "B", "C", "D", "1", "1", "2", "1", "E", "2",
                                            "F", "G", "H", "", "", "1", "I", "1"}));
}

TEST(AddRelease, WritesAVersionFileAndTheArchiveUnderTheNamesThatClientsAskFor) {
  TempDir dir;
  writeFile(dir / "packed", "archive");
  addRelease(dir / "release", "JRE", "170000900", dir / "packed");
  EXPECT_EQ(readFile(dir / "release/Quillory-JRE-version.txt"), "170000900\n");
  EXPECT_EQ(readFile(dir / "release/Quillory-JRE-170000900-archive.p2.l2"), "archive");
}

}  // namespace
}  // namespace quillory::pack
