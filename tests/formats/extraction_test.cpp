#include "formats/extraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/archive_check.h"
#include "formats/whole_archive.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::endOfArchive;
using testing::fileEntry;
using testing::FileSizeLimit;
using testing::folderEntry;
using testing::fromHex;
using ::testing::IsEmpty;
using testing::readFile;
using testing::records;
using testing::signatureBlock;
using testing::signatureData;
using testing::signedBody;
using testing::StreamOf;
using testing::writeFile;
namespace fs = std::filesystem;
using End = ExtractionEnd;

// That this process goes on shows that none of these functions ends it.
class Extraction : public ::testing::Test, public ArchiveSite {
 protected:
  ExtractionResult extractOne(std::FILE* stream, const ExtractionTools& tools = {}) {
    return extractEntry(tools, destDir(), stream, signature_, ArchiveTrust{});
  }

  ExtractionResult extractAll(const std::string& bytes) {
    writeFile(archive(), bytes);
    return extractAllOf(nullptr, archive(), destDir(), ArchiveTrust{});
  }

  std::optional<MetSignature> signature_;
  CapturedLog log_;
};

TEST_F(Extraction, GoesFromEntryToEntryUpToTheEnd) {
  StreamOf stream(folderEntry("lib") + fileEntry("lib/a", "hi") + records({"0", "empty", "0"}) +
                  endOfArchive() + fileEntry("never", "read"));
  for (int entry = 0; entry < 3; ++entry)
    EXPECT_EQ(extractOne(stream.get()).end, End::kEntryDone) << entry;
  const ExtractionResult last = extractOne(stream.get());
  EXPECT_EQ(last.end, End::kEndOfArchive);
  EXPECT_FALSE(last.isFailure());
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/a"));
}

TEST_F(Extraction, EndsAtASignatureBlockAndHandsItOver) {
  StreamOf stream(signatureBlock("-1", "abcd") + fileEntry("never", "read"));
  EXPECT_EQ(extractOne(stream.get()).end, End::kEndOfArchive);
  ASSERT_TRUE(signature_);
  EXPECT_EQ(signature_->offset, -1);
  EXPECT_EQ(signature_->hex, "abcd");
  EXPECT_EQ(extractOne(stream.get()).end, End::kEndOfArchive) << "whatever its offset says";
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(Extraction, SaysWhyItRefusesAnEntry) {
  static const struct {
    std::string bytes;
    const char* entry;
    long length;
    const char* reason;
  } kCases[] = {
      {records({"0", "a/../../b", "1"}), "a/../../b", 0, "it leaves the destination folder"},
      {records({"1", ".."}), "..", 0, "it leaves the destination folder"},
      {records({"0", "c", "-2"}), "c", -2, "its length is negative"}};
  for (const auto& expected : kCases) {
    SCOPED_TRACE(expected.entry);
    StreamOf stream(expected.bytes + "x");
    const ExtractionResult result = extractOne(stream.get());
    EXPECT_EQ(result.end, End::kEntryRefused);
    EXPECT_TRUE(result.isFailure());
    EXPECT_EQ(result.entry, expected.entry);
    EXPECT_EQ(result.length, expected.length);
    EXPECT_EQ(result.reason, expected.reason);
    EXPECT_TRUE(log_.contains(std::string("Refusing archive file ") + expected.entry + " (" +
                              std::to_string(expected.length) + "): " + expected.reason + "\n"));
  }
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(Extraction, NamesTheFileThatCannotBeCreated) {
  fs::create_directory(inDest("a"));
  StreamOf stream(fileEntry("a", "hi"));
  const ExtractionResult result = extractOne(stream.get());
  EXPECT_EQ(result.end, End::kFileNotCreated);
  EXPECT_EQ(result.entry, "a");
  EXPECT_EQ(result.length, 2);
  EXPECT_EQ(result.path, inDest("a"));
  EXPECT_EQ(result.reason, "unable to open file for writing");
}

TEST_F(Extraction, LeavesNothingOfAFileThatCannotBeWrittenToItsEnd) {
  StreamOf stream(fileEntry("a", std::string(100'000, 'x')));
  ExtractionResult result;
  {
    const FileSizeLimit limit(65536);
    result = extractOne(stream.get());
  }
  EXPECT_EQ(result.end, End::kFileNotWritten);
  EXPECT_EQ(result.path, inDest("a"));
  EXPECT_EQ(result.reason, "unable to write " + inDest("a") + ": File too large");
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(Extraction, NamesTheFileThatUnpack200DidNotMake) {
  StreamOf stream(fileEntry("a.jar", "packed", "2"));
  const ExtractionResult result = extractOne(stream.get());
  EXPECT_EQ(result.end, End::kNotUnpacked);
  EXPECT_EQ(result.entry, "a.jar");
  EXPECT_EQ(result.path, inDest("a.jar"));
}

TEST_F(Extraction, TellsOfAFailureInsideANestedArchive) {
  StreamOf stream(fileEntry("app.p2", fileEntry("ok", "1") + records({"0", "../up", "1"}) + "x"));
  const ExtractionResult result = extractOne(stream.get(), {.lzma = "lzma64"});
  EXPECT_EQ(result.end, End::kEntryRefused);
  EXPECT_EQ(result.entry, "../up");
  EXPECT_FALSE(log_.contains("Finished un-archiving"));
  EXPECT_THAT(extracted(), ElementsAre("app.p2", "ok")) << "the archive is there to be looked at";
}

TEST_F(Extraction, NamesTheArchiveThatCannotBeOpened) {
  const ExtractionResult result = extractAllOf(nullptr, archive(), destDir(), ArchiveTrust{});
  EXPECT_EQ(result.end, End::kNoArchive);
  EXPECT_EQ(result.entry, "");
  EXPECT_EQ(result.path, archive());
  EXPECT_TRUE(log_.contains("couldn't open file " + archive() + "\n"));
}

TEST_F(Extraction, DeletesAnArchiveThatItHasExtracted) {
  EXPECT_EQ(extractAll(fileEntry("a", "hi")).end, End::kEndOfArchive);
  EXPECT_FALSE(fs::exists(archive()));
  EXPECT_THAT(extracted(), ElementsAre("a"));
}

TEST_F(Extraction, KeepsAnArchiveThatItCouldNotExtract) {
  EXPECT_TRUE(extractAll(fileEntry("a", "hi") + records({"0", "b", "-1"})).isFailure());
  EXPECT_TRUE(fs::exists(archive()));
  EXPECT_THAT(extracted(), ElementsAre("a"));
}

TEST_F(Extraction, IsNoFailureWhenASignatureDoesNotHold) {
  EXPECT_EQ(extractAll(fileEntry("a", "hi") + signatureBlock("17", "abcd")).end,
            End::kEndOfArchive);
  EXPECT_FALSE(fs::exists(archive()));
  EXPECT_THAT(extracted(), IsEmpty());
}

class ArchiveCheck : public Extraction {
 protected:
  SignatureCheck check(long offset, const std::string& hex) {
    Rsa_key key{};
    const std::string der = fromHex(signatureData("key_1040"));
    EXPECT_TRUE(importPublicKey(reinterpret_cast<const unsigned char*>(der.data()),
                                static_cast<int>(der.size()), &key));
    const SignatureCheck result = checkSignature(archive(), destDir(), offset, hex, &key);
    rsa_free(&key);
    return result;
  }
};

TEST_F(ArchiveCheck, TellsAGoodArchiveFromABadOneAndFromNone) {
  writeFile(inDest("a"), "hi");
  EXPECT_EQ(check(29, "abcd"), SignatureCheck::kNoArchive);
  EXPECT_THAT(extracted(), ElementsAre("a")) << "nothing was looked at";

  const std::string hex = signatureData("pss_1040");
  writeFile(archive(), signedBody() + signatureBlock("29", hex));
  EXPECT_EQ(check(29, hex), SignatureCheck::kHolds);
  EXPECT_THAT(extracted(), ElementsAre("a"));

  writeFile(archive(), "X" + signedBody().substr(1) + signatureBlock("29", hex));
  EXPECT_EQ(check(29, hex), SignatureCheck::kRejected);
  EXPECT_THAT(extracted(), IsEmpty());
}

}  // namespace
}  // namespace quillory
