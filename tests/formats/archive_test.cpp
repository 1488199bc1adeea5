#include "formats/archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <stdexcept>

#include "support/clock.h"
#include "support/owned.h"
#include "support/process.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/page_example.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::endOfArchive;
using ::testing::ExitedWithCode;
using testing::fileEntry;
using testing::FileSizeLimit;
using testing::folderEntry;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::modeOf;
using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::ScopedReplace;
using testing::signatureBlock;
using testing::StreamOf;
using testing::Waited;
using testing::writeFile;
namespace fs = std::filesystem;

class ExtractArchive : public ::testing::Test, public ArchiveSite {
 protected:
  void extract(const std::string& bytes) const {
    writeFile(archive(), bytes);
    EXPECT_EQ(extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr), 0);
  }
};

TEST_F(ExtractArchive, WritesFoldersAndFiles) {
  extract(folderEntry("lib") + fileEntry("lib/a", "hi") + fileEntry("b", "line\n\0x") +
          endOfArchive());
  EXPECT_THAT(extracted(), ElementsAre("b", "lib/", "lib/a"));
  EXPECT_EQ(readFile(inDest("lib/a")), "hi");
  EXPECT_EQ(modeOf(inDest("lib")), 0777U);
  EXPECT_EQ(modeOf(inDest("lib/a")), 0755U);
}

TEST_F(ExtractArchive, LogsEveryStep) {
  CapturedLog log;
  extract(folderEntry("lib") + fileEntry("lib/a", "hi") + fileEntry("e", "") + endOfArchive());
  const std::string lib = inDest("lib");
  EXPECT_EQ(log.text(), "[ExtractArchive] Extracting archive " + archive() + " into " + destDir() +
                            "\n" + "[ExtractArchiveFile] Extracting lib (::1)\n" +
                            "[ChMod] Executing chmod 777 \"" + lib + "\"\n" +
                            "\t[ExtractArchiveFile] Created folder " + lib + "\n" +
                            "[ExtractArchiveFile] Extracting lib/a (::0)\n" +
                            "\t[ExtractArchiveFile] Extracting to " + lib + "/a\n" +
                            "[ChMod] Executing chmod -R 755 \"" + lib + "/a\"\n" +
                            "[ExtractArchiveFile] Extracting e (::0)\n" +
                            "[ExtractArchiveFile] Skipping empty file\n" +
                            "[ExtractArchive] Done extracting archive.\n");
}

TEST_F(ExtractArchive, ExtractsNothingFromOneEmptyRecordAndDeletesIt) {
  extract(endOfArchive());
  EXPECT_THAT(extracted(), IsEmpty());
  EXPECT_FALSE(fs::exists(archive()));
}

TEST_F(ExtractArchive, AcceptsAnUnsignedArchiveAndDeletesIt) {
  CapturedLog log;
  extract(fileEntry("a", "hi") + endOfArchive());
  EXPECT_EQ(readFile(inDest("a")), "hi");
  EXPECT_FALSE(fs::exists(archive()));
  EXPECT_FALSE(log.contains("Pre-Alloc"));
}

TEST_F(ExtractArchive, TakesARecordAfterAFolderAsTheNextType) {
  extract(folderEntry("2") + folderEntry("3") + endOfArchive());
  EXPECT_THAT(extracted(), ElementsAre("2/", "3/"));
}

TEST_F(ExtractArchive, CreatesNoFileOfLengthZero) {
  extract(fileEntry("empty", "") + fileEntry("empty.too/x", "") + fileEntry("a", "hi"));
  EXPECT_THAT(extracted(), ElementsAre("a", "empty.too/"));
}

TEST_F(ExtractArchive, CreatesTheFoldersAboveAnEntry) {
  extract(fileEntry("a/b/c", "hi") + folderEntry("d/e"));
  EXPECT_THAT(extracted(), ElementsAre("a/", "a/b/", "a/b/c", "d/", "d/e/"));
  EXPECT_EQ(modeOf(inDest("a/b")), 0777U);
}

TEST_F(ExtractArchive, TakesEveryOtherTypeAsAPlainFile) {
  for (const char* type : {"0", "3", "-1", "x", "99999999999999999999"}) {
    SCOPED_TRACE(type);
    extract(fileEntry("a", type, type) + endOfArchive());
    EXPECT_EQ(readFile(inDest("a")), type);
  }
}

TEST_F(ExtractArchive, WritesContentLargerThanTheCopyBuffer) {
  std::string content;
  for (int i = 0; content.size() < 2'500'001; ++i) content += std::to_string(i) + '\0';
  extract(fileEntry("big", content) + fileEntry("next", "hi") + endOfArchive());
  EXPECT_EQ(readFile(inDest("big")), content);
  EXPECT_EQ(readFile(inDest("next")), "hi");
}

TEST_F(ExtractArchive, WritesOverWhatIsThere) {
  writeFile(inDest("a"), "something longer");
  extract(fileEntry("a", "new") + endOfArchive());
  EXPECT_EQ(readFile(inDest("a")), "new");
}

TEST_F(ExtractArchive, NeverInterpretsSuffixesInside) {
  extract(fileEntry("a.l2", "hi") + fileEntry("b.p2", "hi") + endOfArchive());
  EXPECT_THAT(extracted(), ElementsAre("a.l2", "b.p2"));
}

TEST_F(ExtractArchive, WritesAnUnknownSpecialBlockToAFile) {
  CapturedLog log;
  extract(fileEntry("qyArcSpBlock_Other", "hi") + fileEntry("qyArcSpBlock_", "yo"));
  EXPECT_EQ(readFile(inDest("qyArcSpBlock_Other")), "hi");
  EXPECT_EQ(readFile(inDest("qyArcSpBlock_")), "yo");
  EXPECT_TRUE(log.contains("[ExtractArchiveFile] Found special block qyArcSpBlock_Other\n"));
  EXPECT_FALSE(log.contains("Found signature block"));
}

TEST_F(ExtractArchive, SkipsASignatureBlockOfLengthZeroLikeAnEmptyFile) {
  CapturedLog log;
  extract(fileEntry("a", "hi") + records({"0", "qyArcSpBlock_DigitalSignature1", "0"}) +
          fileEntry("b", "yo"));
  EXPECT_THAT(extracted(), ElementsAre("a", "b"));
  EXPECT_FALSE(log.contains("Found s"));
}

TEST_F(ExtractArchive, EndsTheProcessWhenTheArchiveCannotBeOpened) {
  EXPECT_EXIT(extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr),
              ExitedWithCode(1),
              HasSubstr("[ExtractArchive] Failed to extract archive - couldn't open file " +
                        archive() + "\n"));
}

TEST_F(ExtractArchive, EndsTheProcessWhenAFileCannotBeCreated) {
  fs::create_directory(inDest("a"));
  EXPECT_EXIT(extract(fileEntry("a", "hi")), ExitedWithCode(1),
              HasSubstr("\t[ExtractArchiveFile] *************************** Unable to extract "
                        "archive file a (2), unable to open file for writing\n"));
}

TEST_F(ExtractArchive, RefusesANegativeLength) {
  EXPECT_EXIT(extract(records({"0", "a", "-2"}) + "hi"), ExitedWithCode(1),
              HasSubstr("[ExtractArchiveFile] Refusing archive file a (-2): its length is "
                        "negative\n"));
  EXPECT_THAT(extracted(), IsEmpty());
}

void extractWithFileLimit(const ArchiveSite& site, rlim_t bytes) {
  const FileSizeLimit limit(bytes);
  extractArchive(nullptr, site.archive().c_str(), site.destDir().c_str(), nullptr);
}

TEST_F(ExtractArchive, EndsTheProcessWhenTheDiskIsFull) {
  constexpr std::size_t kLimit = 65536;
  // The last bytes of the first one fail at the flush, the second one while it is written.
  for (const std::size_t size : {kLimit + 100, std::size_t{1'500'000}}) {
    SCOPED_TRACE(size);
    writeFile(archive(), fileEntry("a", std::string(size, 'x')));
    EXPECT_EXIT(
        extractWithFileLimit(*this, kLimit), ExitedWithCode(1),
        HasSubstr("[ExtractArchiveFile] Unable to extract archive file a (" + std::to_string(size) +
                  "), unable to write " + inDest("a") + ": File too large\n"));
    EXPECT_THAT(extracted(), IsEmpty());
  }
}

TEST_F(ExtractArchive, WaitsForTheRestOfAFile) {
  static std::string archivePath;
  archivePath = archive();
  const ScopedReplace bytesArrive(
      timeCalls.sleepMicros, +[](std::uint64_t micros) {
        EXPECT_EQ(micros, 200'000U);
        writeFile(archivePath, readFile(archivePath) + "x");
      });
  CapturedLog log;
  extract(records({"0", "a", "5"}) + "hi");
  EXPECT_EQ(readFile(inDest("a")), "hixxx");
  const std::string line = "[ExtractArchive] Waiting for the rest of a\n";
  EXPECT_TRUE(log.contains(line));
  EXPECT_EQ(log.text().find(line), log.text().rfind(line)) << "said more than once";
}

TEST_F(ExtractArchive, AllocatesNothingForALengthThatTheFileDoesNotHold) {
  static std::string output;
  static std::uintmax_t sizeMeanwhile;
  output = inDest("a");
  const ScopedReplace neverComes(
      timeCalls.sleepMicros, +[](std::uint64_t) {
        sizeMeanwhile = fs::file_size(output);
        throw Waited();
      });
  CapturedLog log;
  writeFile(archive(), records({"0", "a", "9223372036854775807"}) + "hi");
  EXPECT_THROW(extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr), Waited);
  EXPECT_LE(sizeMeanwhile, 2U);
  EXPECT_FALSE(fs::exists(output)) << "it is not complete";
}

TEST_F(ExtractArchive, EndsWaitsOrExtractsWhereverTheArchiveIsCut) {
  const ScopedReplace neverComes(
      timeCalls.sleepMicros, +[](std::uint64_t) { throw Waited(); });
  const ScopedReplace noShell(
      processCalls.runShell, +[](const char*) { return 0; });
  CapturedLog log;
  const std::string whole = folderEntry("lib") + fileEntry("lib/a", "hi") + fileEntry("b", "yo");
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    writeFile(archive(), whole.substr(0, length));
    try {
      EXPECT_EQ(extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr), 0);
    } catch (const Waited&) {
      EXPECT_TRUE(fs::exists(archive())) << "it may still be completed";
    }
    for (const std::string& name : extracted())
      EXPECT_THAT(name, ::testing::AnyOf("lib/", "l/", "li/", "lib/a", "b")) << name;
    fs::remove_all(destDir());
    fs::create_directory(destDir());
  }
}

TEST_F(ExtractArchive, ExtractsTheExampleOfThePage) {
  extract(pageExample("formats/archive.md", 1));
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/hello.txt"));
  EXPECT_EQ(readFile(inDest("lib/hello.txt")), "hello");
}

class ExtractArchiveFile : public ::testing::Test, public ArchiveSite {
 protected:
  int extractOne(const StreamOf& stream) {
    char* text = nullptr;
    const int result = extractArchiveFileCheckSignature(nullptr, nullptr, destDir().c_str(),
                                                        stream.get(), &offset, &text, nullptr);
    hex.reset(text);
    return result;
  }

  long offset = -1;
  OwnedText hex;
};

TEST_F(ExtractArchiveFile, ExtractsOneEntryAndStopsBehindIt) {
  StreamOf stream(fileEntry("a", "hi") + folderEntry("b") + fileEntry("c", "") + endOfArchive());
  EXPECT_EQ(extractOne(stream), 0);
  EXPECT_THAT(extracted(), ElementsAre("a"));
  EXPECT_EQ(extractOne(stream), 0);
  EXPECT_THAT(extracted(), ElementsAre("a", "b/"));
  EXPECT_EQ(extractOne(stream), 0);
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_EQ(std::ftell(stream.get()), 19);
}

TEST_F(ExtractArchiveFile, ReadsNothingOnceASignatureWasMet) {
  StreamOf stream(fileEntry("a", "hi"));
  offset = 0;
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_EQ(std::ftell(stream.get()), 0);
}

TEST_F(ExtractArchiveFile, HandsOutTheSignatureBlock) {
  CapturedLog log;
  StreamOf stream(signatureBlock("123", "00ff") + fileEntry("ignored", "hi"));
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_EQ(offset, 123);
  EXPECT_STREQ(hex.get(), "00ff");
  EXPECT_EQ(log.text(),
            "[ExtractArchiveFile] Extracting qyArcSpBlock_DigitalSignature1 (::0)\n"
            "[ExtractArchiveFile] Found special block qyArcSpBlock_DigitalSignature1\n"
            "[ExtractArchiveFile] Found signature block DigitalSignature1\n");
}

TEST_F(ExtractArchiveFile, AsksNothingOfTheLengthOfASignatureBlock) {
  StreamOf stream(records({"0", "qyArcSpBlock_DigitalSignature1", "-7", "123", "00ff"}));
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_EQ(offset, 123);
}

TEST_F(ExtractArchiveFile, ReadsASignatureTextOfUpTo8191Characters) {
  StreamOf stream(signatureBlock("1", std::string(8190, 'a')));
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_EQ(hex.get(), std::string(8190, 'a'));
}

TEST_F(ExtractArchiveFile, CutsALongerSignatureText) {
  StreamOf stream(signatureBlock("1", std::string(8191, 'a')) + "next");
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(extractOne(stream), kEndOfArchive);
  EXPECT_THAT(::testing::internal::GetCapturedStdout(),
              HasSubstr("***WARNING - STRING TOO LONG FOR ALLOC 8191>8192! (READSTRING) [aaa"));
  EXPECT_EQ(hex.get(), std::string(8191, 'a'));
  EXPECT_EQ(std::fgetc(stream.get()), '\0') << "its terminator stays unread";
}

TEST_F(ExtractArchiveFile, TakesEveryTypeButAFolderForASignatureBlock) {
  for (const char* type : {"0", "2", "3", "-1", "x"}) {
    SCOPED_TRACE(type);
    StreamOf stream(records({type, "qyArcSpBlock_DigitalSignature1", "1", "123", "00ff"}));
    offset = -1;
    EXPECT_EQ(extractOne(stream), kEndOfArchive);
    EXPECT_EQ(offset, 123);
    EXPECT_STREQ(hex.get(), "00ff");
  }
  StreamOf folder(records({"1", "qyArcSpBlock_DigitalSignature1"}));
  offset = -1;
  EXPECT_EQ(extractOne(folder), 0);
  EXPECT_THAT(extracted(), ElementsAre("qyArcSpBlock_DigitalSignature1/"));
}

TEST_F(ExtractArchiveFile, TakesTheExactNameOnlyForASignatureBlock) {
  CapturedLog log;
  for (const char* name :
       {"qyArcSpBlock_DigitalSignature", "qyArcSpBlock_DigitalSignature2",
        "qyArcSpBlock_DigitalSignature11", "qyArcSpBlock_digitalSignature1",
        "qyArcSpBlock_DigitalSignature1 ", "qyArcSpblock_DigitalSignature1",
        "x/qyArcSpBlock_DigitalSignature1", "qyArcSpBlock_DigitalSignature1/x"}) {
    StreamOf stream(fileEntry(name, "hi"));
    EXPECT_EQ(extractOne(stream), 0) << name;
    EXPECT_EQ(readFile(inDest(name)), "hi");
  }
  EXPECT_FALSE(log.contains("Found signature block"));
}

TEST_F(ExtractArchiveFile, IgnoringTheSignatureKeepsNoneOfIt) {
  StreamOf stream(fileEntry("a", "hi") + signatureBlock("1", "00ff"));
  EXPECT_EQ(
      extractArchiveFileIgnoreSignature(nullptr, nullptr, destDir().c_str(), stream.get(), nullptr),
      0);
  EXPECT_EQ(
      extractArchiveFileIgnoreSignature(nullptr, nullptr, destDir().c_str(), stream.get(), nullptr),
      kEndOfArchive);
  EXPECT_THAT(extracted(), ElementsAre("a"));
}

}  // namespace
}  // namespace quillory
