#include "formats/archive_trust.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/whole_archive.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::endOfArchive;
using testing::fileEntry;
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

// An archive of the runtime "JRE" 17 for Linux, whose signature was made with another program.
class HardenedArchive : public ::testing::Test, public ArchiveSite {
 protected:
  HardenedArchive() {
    const std::string der = fromHex(signatureData("key_identity"));
    EXPECT_TRUE(importPublicKey(reinterpret_cast<const unsigned char*>(der.data()),
                                static_cast<int>(der.size()), &key_));
  }
  ~HardenedArchive() override { rsa_free(&key_); }

  static std::string identityEntry(const std::string& fields) {
    return records({"0", "qyArcSpBlock_Component1;" + fields, "0"});
  }
  // `body` with a block that names its place, and a signature of something else.
  static std::string signedAs(const std::string& body) {
    return body + signatureBlock(std::to_string(body.size()), signatureData("pss_identity"));
  }

  std::string refusalOf(const std::string& bytes) {
    writeFile(archive(), bytes);
    const auto found = inspectArchive(archive(), trust_);
    EXPECT_TRUE(found);
    return found ? found->refusal : "";
  }

  ExtractionResult extract(const std::string& bytes, const char* unpack200 = nullptr) {
    writeFile(archive(), bytes);
    return extractAllOf(unpack200, archive(), destDir(), trust_);
  }

  // Nothing is left, and the log says why.
  void expectRejected(const ExtractionResult& result, const std::string& reason) {
    EXPECT_EQ(result.end, End::kArchiveRejected);
    EXPECT_TRUE(result.isFailure());
    EXPECT_EQ(result.verdict, ArchiveVerdict::kRejected);
    EXPECT_EQ(result.reason, reason);
    EXPECT_EQ(result.path, archive());
    EXPECT_EQ(result.entry, "");
    EXPECT_TRUE(
        log_.contains("[ExtractArchive] Refusing archive " + archive() + ": " + reason + "\n"));
    EXPECT_FALSE(fs::exists(archive()));
    EXPECT_THAT(extracted(), IsEmpty());
  }

  const std::string body_ = identityEntry("JRE;17;linux") + signedBody();
  const std::string good_ = signedAs(body_);
  Rsa_key key_{};
  ArchiveTrust trust_{&key_, true, ArchiveIdentity{"JRE", "17", "linux-x86_64"}};
  CapturedLog log_;
};

TEST_F(HardenedArchive, IsInstalledWhenItProvesWhatItIs) {
  const ExtractionResult result = extract(good_);
  EXPECT_EQ(result.end, End::kEndOfArchive);
  EXPECT_EQ(result.verdict, ArchiveVerdict::kVerified);
  EXPECT_EQ(result.reason, "");
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/hello.txt"));
  EXPECT_FALSE(fs::exists(archive()));
  EXPECT_TRUE(log_.contains("[ExtractArchive] The archive is JRE 17 (linux)\n"));
  EXPECT_TRUE(log_.contains("[ExtractArchive] Archive signature verified.\n"));
}

TEST_F(HardenedArchive, IsInstalledAsOneOfTheTailToo) {
  StreamOf stream(fileEntry("JRE.p2", good_));
  std::optional<MetSignature> signature;
  const ExtractionResult result =
      extractEntry({.lzma = "lzma64"}, destDir(), stream.get(), signature, trust_);
  EXPECT_EQ(result.end, End::kEntryDone);
  EXPECT_EQ(result.verdict, ArchiveVerdict::kVerified);
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/hello.txt"));
}

TEST_F(HardenedArchive, OfTheTailIsRejectedLikeAnyOther) {
  StreamOf stream(fileEntry("JRE.p2", signedBody() + endOfArchive()));
  std::optional<MetSignature> signature;
  const ExtractionResult result =
      extractEntry({.lzma = "lzma64"}, destDir(), stream.get(), signature, trust_);
  EXPECT_EQ(result.end, End::kArchiveRejected);
  EXPECT_EQ(result.reason, "it is not signed");
  EXPECT_FALSE(log_.contains("Finished un-archiving"));
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(HardenedArchive, IsRejectedWithoutASignature) {
  for (const std::string& bytes :
       {std::string(), endOfArchive(), body_, body_ + endOfArchive(),
        body_ + endOfArchive() + signatureBlock("70", signatureData("pss_identity")),
        body_ + records({"0", "qyArcSpBlock_DigitalSignature1", "0"})}) {
    expectRejected(extract(bytes), "it is not signed");
    EXPECT_FALSE(log_.contains("Extracting lib")) << "nothing was written meanwhile";
  }
}

// Each of these would be extracted, and is not signed.
TEST_F(HardenedArchive, IsRejectedWithEntriesThatItsSignatureDoesNotCover) {
  const std::string block =
      signatureBlock(std::to_string(body_.size()), signatureData("pss_identity"));
  expectRejected(extract(body_ + fileEntry("evil", block) + block),
                 "its signature does not cover all of it");
  expectRejected(extract(body_ + folderEntry("evil") + block),
                 "its signature does not cover all of it");
  for (const char* offset : {"-1", "0", "69", "71", "99999", ""}) {
    SCOPED_TRACE(offset);
    expectRejected(extract(body_ + signatureBlock(offset, signatureData("pss_identity"))),
                   "its signature does not cover all of it");
  }
}

TEST_F(HardenedArchive, IsRejectedWhenSomethingFollowsItsSignature) {
  for (const std::string& behind :
       {std::string(1, '\0'), std::string("x"), fileEntry("a", "b"), good_}) {
    expectRejected(extract(good_ + behind), "something follows its signature");
  }
}

TEST_F(HardenedArchive, IsRejectedWhereverItIsCut) {
  for (std::size_t length = 0; length + 1 < good_.size(); ++length) {
    SCOPED_TRACE(length);
    const ExtractionResult result = extract(good_.substr(0, length));
    EXPECT_EQ(result.end, End::kArchiveRejected);
    EXPECT_THAT(extracted(), IsEmpty());
  }
}

TEST_F(HardenedArchive, IsRejectedWhenAByteOfItIsAnotherOne) {
  for (std::size_t at = 0; at < body_.size(); ++at) {
    SCOPED_TRACE(at);
    std::string changed = good_;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_EQ(extract(changed).end, End::kArchiveRejected);
    EXPECT_THAT(extracted(), IsEmpty());
  }
}

TEST_F(HardenedArchive, IsNotWaitedForWhenALengthIsWrong) {
  expectRejected(extract(identityEntry("JRE;17;linux") + records({"0", "a", "99999"}) + "hi"),
                 "it is cut off, or damaged, in a");
  expectRejected(extract(identityEntry("JRE;17;linux") + records({"0", "a", "-1"}) + "hi"),
                 "it is cut off, or damaged, in a");
}

TEST_F(HardenedArchive, MustSayWhatItIsInItsFirstEntry) {
  const std::string identity = identityEntry("JRE;17;linux");
  for (const std::string& body :
       {signedBody(), folderEntry("lib") + identity, records({"0", "empty", "0"}) + identity,
        identityEntry("JRE;17"), identityEntry("JRE;17;linux;"), identityEntry("%4aRE;17;linux"),
        records({"3", "qyArcSpBlock_Component1;JRE;17;linux", "0"}),
        fileEntry("qyArcSpBlock_Component1;JRE;17;linux", "x"),
        records({"1", "qyArcSpBlock_Component1;JRE;17;linux"})}) {
    EXPECT_EQ(refusalOf(signedAs(body)), "it does not say what it is");
  }
}

TEST_F(HardenedArchive, IsRefusedInThePlaceOfAnotherOne) {
  static const struct {
    ArchiveIdentity expected;
    const char* refusal;
  } kCases[] = {
      {{"JRE", "17", "linux-x86_64"}, ""},
      {{"JRE", "17", "linux-aarch64"}, ""},
      {{"Demo", "17", "linux-x86_64"}, "it is JRE 17 (linux), not Demo 17 (linux-x86_64)"},
      {{"JRE", "18", "linux-x86_64"}, "it is JRE 17 (linux), not JRE 18 (linux-x86_64)"},
      {{"JRE", "17", "macos"}, "it is JRE 17 (linux), not JRE 17 (macos)"},
      {{"jre", "17", "linux-x86_64"}, "it is JRE 17 (linux), not jre 17 (linux-x86_64)"},
  };
  for (const auto& [expected, refusal] : kCases) {
    trust_.expected = expected;
    EXPECT_EQ(refusalOf(good_), refusal);
  }
  trust_.expected = std::nullopt;
  EXPECT_EQ(refusalOf(good_), "");
}

TEST_F(HardenedArchive, IsRejectedWithAnotherKeyOrNone) {
  trust_.key = nullptr;
  expectRejected(extract(good_), "its signature does not hold");

  Rsa_key other{};
  const std::string der = fromHex(signatureData("key_2048"));
  ASSERT_TRUE(importPublicKey(reinterpret_cast<const unsigned char*>(der.data()),
                              static_cast<int>(der.size()), &other));
  trust_.key = &other;
  expectRejected(extract(good_), "its signature does not hold");
  rsa_free(&other);
}

// The tool may come out of the same archive.
TEST_F(HardenedArchive, RunsNothingBeforeItsSignatureIsKnownToHold) {
  const std::string ran = beside("ran");
  const std::string tool = beside("unpack200");
  writeFile(tool, "#!/bin/sh\ntouch '" + ran + "'\n");
  fs::permissions(tool, fs::perms::owner_all);
  const std::string bytes =
      signedAs(identityEntry("JRE;17;linux") + fileEntry("a.jar", "packed", "2"));
  expectRejected(extract(bytes, tool.c_str()), "its signature does not hold");
  EXPECT_FALSE(fs::exists(ran));

  trust_.isHardened = false;  // As bundles always have: that is what the file was made for.
  EXPECT_EQ(extract(bytes, tool.c_str()).end, End::kNotUnpacked);
  EXPECT_TRUE(fs::exists(ran));
}

TEST_F(HardenedArchive, EmptiesAFolderOfNamesThatBeginWithADot) {
  writeFile(inDest(".a"), "before");
  expectRejected(extract(body_), "it is not signed");
}

TEST_F(HardenedArchive, IsNoArchiveWhenItIsNotThere) {
  EXPECT_FALSE(inspectArchive(archive(), trust_));
  EXPECT_EQ(extractAllOf(nullptr, archive(), destDir(), trust_).end, End::kNoArchive);
}

// Whoever is not hardened takes all of these, as ever.
TEST_F(HardenedArchive, IsAskedForByHardenedBundlesOnly) {
  trust_.isHardened = false;
  EXPECT_EQ(extract(signedBody()).verdict, ArchiveVerdict::kUnsigned);
  EXPECT_EQ(extract(good_ + "behind").verdict, ArchiveVerdict::kVerified);
  trust_.expected = ArchiveIdentity{"Demo", "1", "macos"};
  EXPECT_EQ(extract(good_).verdict, ArchiveVerdict::kVerified);
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/hello.txt"));
  EXPECT_FALSE(log_.contains("The archive is"));
  EXPECT_FALSE(log_.contains("Refusing"));

  const ExtractionResult result = extract(signedAs(signedBody()));
  EXPECT_EQ(result.end, End::kEndOfArchive);
  EXPECT_EQ(result.verdict, ArchiveVerdict::kRejected);
  EXPECT_EQ(result.reason, "its signature does not hold");
  EXPECT_THAT(extracted(), IsEmpty());
}

}  // namespace
}  // namespace quillory
