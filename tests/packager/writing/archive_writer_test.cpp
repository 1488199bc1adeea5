#include "packager/writing/archive_writer.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using testing::ChildResult;
using testing::madeKey;
using testing::pageExample;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(ArchiveWriter, GivesTheExampleOfThePage) {
  StringSink bytes;
  ArchiveWriter archive(bytes);
  archive.folder("lib");
  archive.bytes("lib/hello.txt", "hello");
  archive.end();
  EXPECT_EQ(bytes.bytes(), pageExample("formats/archive.md", 1));
}

TEST(ArchiveWriter, SaysWhatTheArchiveIsAsThePageDoes) {
  StringSink bytes;
  ArchiveWriter(bytes).identity({"JRE", "17", "linux"});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/archive.md", 4));
}

TEST(ArchiveWriter, CopiesFilesFromTheDisk) {
  TempDir dir;
  const std::string content(300000, 'x');
  writeFile(dir / "big", content);
  StringSink bytes;
  ArchiveWriter archive(bytes);
  archive.file("a/big", dir / "big", content.size());
  archive.end();
  EXPECT_EQ(bytes.bytes(), records({"0", "a/big", "300000"}) + content + records({""}));
}

TEST(ArchiveWriter, NoticesAFileThatChangedMeanwhile) {
  TempDir dir;
  writeFile(dir / "file", "longer");
  StringSink bytes;
  ArchiveWriter archive(bytes);
  EXPECT_THROW(archive.file("file", dir / "file", 3), PackError);
}

TEST(ArchiveWriter, WritesATreeInTheOrderOfItsPathsWithoutEmptyFiles) {
  ContentTree tree("test");
  tree.addBytes("2", "b/two");
  tree.addBytes("", "b/empty");
  tree.addFolder("b");
  tree.addBytes("1", "a");
  tree.addFolder("c");
  StringSink bytes;
  ArchiveWriter archive(bytes);
  archive.tree(tree);
  archive.end();
  EXPECT_EQ(bytes.bytes(), records({"0", "a", "1"}) + "1" + records({"1", "b", "0", "b/two", "1"}) +
                               "2" + records({"1", "c", ""}));
}

class SignedArchive : public ::testing::Test {
 protected:
  std::string sign(Salt salt) {
    StringSink bytes;
    ArchiveWriter archive(bytes);
    archive.bytes("file", "content");
    archive.endSigned(SigningKey::load(madeKey()), salt);
    return bytes.bytes();
  }

  // Checked by a script with other crypto libraries.
  ChildResult check(const std::string& bytes) {
    writeFile(dir_ / "archive", bytes);
    return runChild({"/usr/bin/python3", QUILLORY_CHECK_SIGNATURE, madeKey(), dir_ / "archive"});
  }

  const std::string entry_ = records({"0", "file", "7"}) + "content";
  TempDir dir_;
};

TEST_F(SignedArchive, EndsWithABlockThatNamesItsPlaceAndHoldsForOthers) {
  for (const Salt salt : {Salt::kRandom, Salt::kDerived}) {
    const std::string bytes = sign(salt);
    const std::string head = entry_ + records({"0", "qyArcSpBlock_DigitalSignature1", "1",
                                               std::to_string(entry_.size())});
    ASSERT_EQ(bytes.substr(0, head.size()), head);
    EXPECT_EQ(bytes.size(), head.size() + 512 + 1) << "256 bytes in hexadecimal, and a terminator";
    const ChildResult result = check(bytes);
    EXPECT_EQ(result.out, "good\n") << result.err;
  }
}

TEST_F(SignedArchive, IsNotGoodAnyMoreWhenAByteChanges) {
  std::string bytes = sign(Salt::kRandom);
  bytes[5] = 'F';
  EXPECT_EQ(check(bytes).out, "bad\n");
}

TEST_F(SignedArchive, IsTheSameEveryTimeWithADerivedSaltAndElseNot) {
  EXPECT_EQ(sign(Salt::kDerived), sign(Salt::kDerived));
  EXPECT_NE(sign(Salt::kRandom), sign(Salt::kRandom));
}

TEST(ArchiveWriter, NoticesAFileThatBecameShorter) {
  TempDir dir;
  writeFile(dir / "file", "short");
  StringSink bytes;
  ArchiveWriter archive(bytes);
  try {
    archive.file("file", dir / "file", 6);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()), dir / "file" +
                                       ": error: the file changed while it was packed\n"
                                       "  -> pack again when it is at rest");
  }
}

TEST(ArchiveWriter, NamesAFileThatIsNotThereAnyMore) {
  TempDir dir;
  StringSink bytes;
  ArchiveWriter archive(bytes);
  EXPECT_THROW(archive.file("file", dir / "missing", 1), PackError);
}

TEST(ArchiveWriter, RefusesPathsThatTheLauncherWouldCut) {
  StringSink bytes;
  ArchiveWriter archive(bytes);
  archive.folder(std::string(1022, 'p'));
  EXPECT_THROW(archive.folder(std::string(1023, 'p')), PackError);
  EXPECT_THROW(archive.bytes(std::string(1023, 'p'), "x"), PackError);
}

TEST(ArchiveWriter, WritesTheFilesOfATreeFromTheDisk) {
  TempDir dir;
  writeFile(dir / "src/b", "22");
  writeFile(dir / "src/empty", "");
  ContentTree tree("test");
  tree.addFolderContent(dir / "src", "lib");
  StringSink bytes;
  ArchiveWriter(bytes).tree(tree);
  EXPECT_EQ(bytes.bytes(), records({"1", "lib", "0", "lib/b", "2"}) + "22");
}

TEST(ArchiveWriter, EndsAnArchiveOfNothing) {
  StringSink bytes;
  ArchiveWriter(bytes).end();
  EXPECT_EQ(bytes.bytes(), records({""}));
}

TEST(WriteFileEntryHeader, IsThatOfAFile) {
  StringSink bytes;
  writeFileEntryHeader(bytes, "a.p2", 5000000000);
  EXPECT_EQ(bytes.bytes(), records({"0", "a.p2", "5000000000"}));
}

}  // namespace
}  // namespace quillory::pack
