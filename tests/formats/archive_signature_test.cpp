#include "formats/archive_signature.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "formats/archive.h"
#include "formats/keccak.h"
#include "formats/mixed_hash.h"
#include "support/clock.h"
#include "support/owned.h"
#include "support/process.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/scoped_replace.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using testing::fileEntry;
using testing::fromHex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::ScopedReplace;
using testing::signatureBlock;
using testing::signatureData;
using testing::signedBody;
using testing::Waited;
using testing::writeFile;
namespace fs = std::filesystem;

struct KeyFreer {
  void operator()(Rsa_key* key) const { freePublicKey(key); }
};
using OwnedKey = std::unique_ptr<Rsa_key, KeyFreer>;
using OwnedDigest = std::unique_ptr<unsigned char, HeapFreer>;

const unsigned char* bytesIn(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

OwnedKey importKey(const std::string& der) {
  return OwnedKey(loadDEREncodedPublicKey(bytesIn(der), static_cast<int>(der.size())));
}

OwnedKey keyFrom(const std::string& name) { return importKey(fromHex(signatureData(name))); }

// The mixed digest of signedBody(), made with two other programs.
const char kBodySha256[] = "aa0d293eb26442a104178d6375f51f98c4cfb1d46de5a3202945dabb8e3553d6";
const char kBodyKeccak256[] = "10c717b97f478e88fbca02ed068efa756863b8aa06378036e457ccc9061ce71d";

std::string digestOfBody() { return fromHex(std::string(kBodySha256) + kBodyKeccak256); }

bool isVerified(const std::string& signature, const std::string& digest, Rsa_key* key) {
  return verifySignature(bytesIn(signature), static_cast<int>(signature.size()), bytesIn(digest),
                         key);
}

// What the statement prints on standard output.
template <typename Statement>
std::string saidBy(Statement statement) {
  ::testing::internal::CaptureStdout();
  statement();
  return ::testing::internal::GetCapturedStdout();
}

// The library looks the digest up by name.
class WithHashes : public ::testing::Test {
 protected:
  WithHashes() {
    Hash_state state;
    EXPECT_TRUE(initHash(&state));
  }
};

TEST(DoFinal, GivesTheMixedDigestOfAllThatWasFed) {
  const std::string body = signedBody();
  for (int first = 0; first <= static_cast<int>(body.size()); ++first) {
    Hash_state state;
    ASSERT_TRUE(initHash(&state));
    EXPECT_TRUE(updateHash(&state, bytesIn(body), first));
    EXPECT_TRUE(updateHash(&state, bytesIn(body) + first, static_cast<int>(body.size()) - first));
    const OwnedDigest digest(doFinal(&state));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(digest.get()), 64), digestOfBody());
  }
}

// The library's table of hashes, filled up with others until the end of the scope.
class FullHashTable {
 public:
  FullHashTable() {
    for (const auto* own : {&mixed_descriptor, &sha256_desc, &sha3_256_descriptor})
      unregister_hash(own);
    for (std::size_t i = 0; i < TAB_SIZE; ++i) {
      names_[i] = "other" + std::to_string(i);
      others_[i] = sha256_desc;
      others_[i].name = names_[i].c_str();
      register_hash(&others_[i]);
    }
  }
  ~FullHashTable() {
    for (const ltc_hash_descriptor& other : others_) unregister_hash(&other);
  }

 private:
  std::array<std::string, TAB_SIZE> names_;
  std::array<ltc_hash_descriptor, TAB_SIZE> others_;
};

TEST(InitHash, WarnsWhenTheLibraryTakesNoMoreHashes) {
  const FullHashTable full;
  Hash_state state;
  const std::string printed = saidBy([&] { EXPECT_FALSE(initHash(&state)); });
  EXPECT_EQ(printed, "WARNING: Error registering mixed hash");
  EXPECT_FALSE(updateHash(&state, bytesIn("x"), 1));
  EXPECT_EQ(doFinal(&state), nullptr);
}

TEST(InitHash, MayBeCalledAgain) {
  Hash_state state;
  EXPECT_TRUE(initHash(&state));
  EXPECT_TRUE(initHash(&state));
}

// The library finds a hash by the first of its name: the order decides where others have one.
TEST(InitHash, RegistersItsHashesInTheirOrder) {
  for (const auto* own : {&mixed_descriptor, &sha256_desc, &sha3_256_descriptor})
    unregister_hash(own);
  Hash_state state;
  ASSERT_TRUE(initHash(&state));
  const int mixed = find_hash("mixed");
  EXPECT_GE(mixed, 0);
  EXPECT_GT(find_hash("sha256"), mixed);
  EXPECT_GT(find_hash(sha3_256_descriptor.name), find_hash("sha256"));
}

TEST(UpdateHash, RefusesANegativeLength) {
  Hash_state state;
  ASSERT_TRUE(initHash(&state));
  EXPECT_FALSE(updateHash(&state, nullptr, -1));
}

TEST(LoadDEREncodedPublicKey, TakesTheKeyAlone) {
  // The PKCS #1 form is what the other form holds from its 24th byte on.
  const std::string der = fromHex(signatureData("key_2048"));
  EXPECT_TRUE(importKey(der.substr(24)));
}

TEST(LoadDEREncodedPublicKey, RefusesWhatIsNoKey) {
  for (const std::string& der : {std::string(), std::string("\x30"), std::string(500, '\xFF')}) {
    const std::string printed = saidBy([&] { EXPECT_FALSE(importKey(der)); });
    EXPECT_EQ(printed, "ERROR - unable to import public key.\n");
  }
  saidBy([] { EXPECT_EQ(loadDEREncodedPublicKey(nullptr, -1), nullptr); });
}

TEST(LoadDEREncodedPublicKey, RefusesAKeyCutAnywhere) {
  const std::string der = fromHex(signatureData("key_2048"));
  saidBy([&] {
    for (std::size_t length = 0; length < der.size(); ++length)
      EXPECT_FALSE(importKey(der.substr(0, length))) << length;
  });
}

TEST(ImportPublicKey, AnswersWithoutAWord) {
  const std::string der = fromHex(signatureData("key_2048"));
  const auto import = [](const std::string& bytes, Rsa_key* key) {
    return importPublicKey(bytesIn(bytes), static_cast<int>(bytes.size()), key);
  };
  const std::string printed = saidBy([&] {
    Rsa_key key{};
    EXPECT_FALSE(import("", &key));
    EXPECT_FALSE(import(std::string(500, '\xFF'), &key));
    EXPECT_TRUE(import(der, &key));
    rsa_free(&key);
  });
  EXPECT_EQ(printed, "");
}

TEST_F(WithHashes, MatchSignatureTellsWrongFromMalformedWithoutAWord) {
  const OwnedKey key = keyFrom("key_2048");
  const auto match = [&](const std::string& signature, Rsa_key* with) {
    return matchSignature(bytesIn(signature), static_cast<int>(signature.size()),
                          bytesIn(digestOfBody()), with);
  };
  const std::string printed = saidBy([&] {
    EXPECT_EQ(match(fromHex(signatureData("pss_2048")), key.get()), SignatureMatch::kMatches);
    EXPECT_EQ(match(fromHex(signatureData("pss_of_nothing_2048")), key.get()),
              SignatureMatch::kDiffers);
    EXPECT_EQ(match(fromHex(signatureData("pss_2048")), nullptr), SignatureMatch::kDiffers);
    EXPECT_EQ(match("short", key.get()), SignatureMatch::kMalformed);
    EXPECT_EQ(match("", key.get()), SignatureMatch::kMalformed);
  });
  EXPECT_EQ(printed, "");
}

TEST(FreePublicKey, TakesNull) { freePublicKey(nullptr); }

TEST_F(WithHashes, PssSignatureOverTheDigestIsVerified) {
  const OwnedKey key = keyFrom("key_2048");
  const std::string printed = saidBy([&] {
    EXPECT_TRUE(isVerified(fromHex(signatureData("pss_2048")), digestOfBody(), key.get()));
  });
  EXPECT_EQ(printed, "");
}

TEST_F(WithHashes, ModulusOf130BytesIsLongEnough) {
  const OwnedKey key = keyFrom("key_1040");
  EXPECT_TRUE(isVerified(fromHex(signatureData("pss_1040")), digestOfBody(), key.get()));
}

TEST_F(WithHashes, ModulusOf128BytesIsTooShort) {
  const OwnedKey key = keyFrom("key_1024");
  const std::string printed = saidBy([&] {
    EXPECT_FALSE(isVerified(fromHex(signatureData("pss_salt_62_1024")), digestOfBody(), key.get()));
  });
  EXPECT_EQ(printed, "ERROR - signature verification failed.\n");
}

TEST_F(WithHashes, OtherKindsOfSignatureAreRejected) {
  const OwnedKey key = keyFrom("key_2048");
  for (const char* name : {"pkcs1_2048", "pss_salt_32_2048", "pss_of_nothing_2048"}) {
    saidBy([&] {
      EXPECT_FALSE(isVerified(fromHex(signatureData(name)), digestOfBody(), key.get())) << name;
    });
  }
}

TEST_F(WithHashes, WrongKeyIsRejected) {
  const OwnedKey key = keyFrom("key_other");
  saidBy([&] {
    EXPECT_FALSE(isVerified(fromHex(signatureData("pss_2048")), digestOfBody(), key.get()));
  });
}

TEST_F(WithHashes, MissingKeyIsRejected) {
  EXPECT_FALSE(isVerified(fromHex(signatureData("pss_2048")), digestOfBody(), nullptr));
}

TEST_F(WithHashes, ByteChangedAnywhereIsRejected) {
  const OwnedKey key = keyFrom("key_2048");
  const std::string signature = fromHex(signatureData("pss_2048"));
  saidBy([&] {
    for (std::size_t at = 0; at < signature.size(); ++at) {
      std::string changed = signature;
      changed[at] = static_cast<char>(changed[at] ^ 1);
      EXPECT_FALSE(isVerified(changed, digestOfBody(), key.get())) << "signature byte " << at;
    }
    for (std::size_t at = 0; at < digestOfBody().size(); ++at) {
      std::string changed = digestOfBody();
      changed[at] = static_cast<char>(changed[at] ^ 1);
      EXPECT_FALSE(isVerified(signature, changed, key.get())) << "digest byte " << at;
    }
  });
}

TEST_F(WithHashes, SignatureOfAnotherLengthIsRejectedWithAMessage) {
  const OwnedKey key = keyFrom("key_2048");
  const std::string signature = fromHex(signatureData("pss_2048"));
  for (const std::string& other :
       {std::string(), signature.substr(1), signature.substr(0, 255), signature + 'x'}) {
    const std::string printed =
        saidBy([&] { EXPECT_FALSE(isVerified(other, digestOfBody(), key.get())); });
    EXPECT_EQ(printed, "ERROR - signature verification failed.\n");
  }
}

class VerifyArchive : public ::testing::Test, public ArchiveSite {
 protected:
  VerifyArchive() : key(keyFrom("key_2048")) {}

  // Whether the archive was accepted.
  bool extract(const std::string& bytes) {
    writeFile(archive(), bytes);
    fs::create_directory(inDest("before"));
    printed = saidBy([&] {
      EXPECT_EQ(extractArchive(nullptr, archive().c_str(), destDir().c_str(), key.get()), 0);
    });
    EXPECT_FALSE(fs::exists(archive()));
    const bool isAccepted = fs::exists(inDest("before"));
    if (!isAccepted) {
      EXPECT_THAT(extracted(), IsEmpty());
    }
    return isAccepted;
  }

  const std::string signatureHex = signatureData("pss_2048");
  const std::string signedArchive = signedBody() + signatureBlock("29", signatureHex);
  OwnedKey key;
  CapturedLog log;
  std::string printed;
};

const std::string kStars(71, '*');

TEST_F(VerifyArchive, AcceptsWhatIsSignedAndLogsItsWay) {
  EXPECT_TRUE(extract(signedArchive));
  EXPECT_EQ(readFile(inDest("lib/hello.txt")), "hello");
  const std::string text = log.text();
  EXPECT_EQ(text.substr(text.find("[ExtractArchive] Done")),
            "[ExtractArchive] Done extracting archive.\n"
            "[ExtractArchive] Pre-Alloc\n"
            "[ExtractArchive] Post-Alloc\n"
            "[ExtractArchive] Produced a signature of length 256\n"
            "[ExtractArchive] Starting hash...\n"
            "[ExtractArchive] Seeking to start of data...\n"
            "[ExtractArhive] At start of file.\n"
            "[ExtractArchive] Completed hash\n"
            "[ExtractArchive] Produced hash: " +
                std::string(kBodySha256) +
                "\n"
                "[ExtractArchive] Archive signature verified.\n");
}

TEST_F(VerifyArchive, EmptiesTheFolderOfAnArchiveThatWasChanged) {
  std::string changed = signedArchive;
  changed[signedBody().size() - 1] = '!';
  EXPECT_FALSE(extract(changed));
  EXPECT_TRUE(log.contains("[ExtractArchive] Completed hash\n"));
  EXPECT_TRUE(log.contains(kStars +
                           "\n[ExtractArchive] ERROR - unable to verify signature of hash of "
                           "archive.\n[ExtractArchive] Quillory will disregard this update.\n"));
  EXPECT_EQ(log.messages().back(), kStars + "\n");
}

TEST_F(VerifyArchive, NoticesEveryByteBeforeTheBlock) {
  for (long at = 0; at < 29; ++at) {
    std::string changed = signedArchive;
    changed[static_cast<std::size_t>(at)] =
        static_cast<char>(changed[static_cast<std::size_t>(at)] ^ 1);
    writeFile(archive(), changed);
    fs::create_directory(inDest("before"));
    EXPECT_FALSE(
        verifyArchive(archive().c_str(), destDir().c_str(), 29, signatureHex.c_str(), key.get()))
        << at;
    EXPECT_THAT(extracted(), IsEmpty());
  }
}

TEST_F(VerifyArchive, AsksNothingOfWhatFollowsTheBlock) {
  EXPECT_TRUE(extract(signedArchive + "anything"));
  EXPECT_TRUE(extract(signedArchive + fileEntry("never", "read")));
  EXPECT_FALSE(fs::exists(inDest("never")));
}

TEST_F(VerifyArchive, LeavesNothingOfARejectedArchive) {
  EXPECT_FALSE(extract(fileEntry(".a", "hi") + fileEntry("dir/.b", "hi") +
                       signatureBlock("29", signatureHex)));
}

TEST_F(VerifyArchive, LeavesTheFolderOfARejectedArchiveEmpty) {
  EXPECT_FALSE(extract(signedBody() + signatureBlock("29", "00")));
  EXPECT_TRUE(fs::is_directory(destDir()));
  EXPECT_TRUE(fs::is_empty(destDir()));
}

TEST_F(VerifyArchive, SaysThatAnArchiveCannotBeReadFromItsStart) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[1]);
  const std::string unseekable = "/dev/fd/" + std::to_string(ends[0]);
  saidBy([&] {
    EXPECT_FALSE(verifyArchive(unseekable.c_str(), destDir().c_str(), 0, "", key.get()));
  });
  close(ends[0]);
  EXPECT_TRUE(
      log.contains("[ExtractArchive] Seeking to start of data...\n"
                   "[ExtractArchive] fseek() Error?!\n"
                   "[ExtractArchive] Completed hash\n"));
}

TEST_F(VerifyArchive, RejectsASignedArchiveWithoutAKey) {
  key.reset();
  EXPECT_FALSE(extract(signedArchive));
  EXPECT_TRUE(log.contains("[ExtractArchive] There is no public key to verify with.\n"));
}

TEST_F(VerifyArchive, RejectsWhatCannotBeHashed) {
  const FullHashTable full;
  EXPECT_FALSE(extract(signedArchive));
  EXPECT_TRUE(log.contains("[ExtractArchive] Completed hash\n"));
}

TEST_F(VerifyArchive, RejectsASignatureOfPkcs1) {
  EXPECT_FALSE(extract(signedBody() + signatureBlock("29", signatureData("pkcs1_2048"))));
}

TEST_F(VerifyArchive, RejectsAnEmptySignature) {
  EXPECT_FALSE(extract(signedBody() + signatureBlock("29", "")));
  EXPECT_TRUE(log.contains("Produced a signature of length 0\n"));
  EXPECT_THAT(printed, HasSubstr("ERROR - signature verification failed.\n"));
}

TEST_F(VerifyArchive, ReadsHexadecimalOfEitherCase) {
  std::string upper = signatureHex;
  for (char& digit : upper) digit = static_cast<char>(std::toupper(digit));
  EXPECT_TRUE(extract(signedBody() + signatureBlock("29", upper)));
}

TEST_F(VerifyArchive, LogsASignatureLengthThatPointsElsewhereAndVerifiesUpToThere) {
  EXPECT_FALSE(extract(signedBody() + signatureBlock("8", signatureHex)));
  const std::string invalid =
      "[ExtractArchive] Archive INVALID.  Archive signature did not match place in file (";
  EXPECT_TRUE(log.contains(invalid + "asb name mismatch)\n" + invalid + "len mismatch)\n" +
                           invalid + "sig mismatch)\n"));
  EXPECT_TRUE(log.contains("[ExtractArchive] Completed hash\n"));
}

// What is signed ends before the block, with an entry that holds what is read at that place.
TEST_F(VerifyArchive, AcceptsASignatureOfLessThanStandsBeforeTheBlock) {
  EXPECT_TRUE(extract(signedBody() + fileEntry("notes", records({"29", signatureHex})) +
                      signatureBlock("29", signatureHex)));
  EXPECT_TRUE(log.contains("(asb name mismatch)\n"));
  EXPECT_FALSE(log.contains("(len mismatch)\n"));
  EXPECT_FALSE(log.contains("(sig mismatch)\n"));
  EXPECT_TRUE(log.contains("[ExtractArchive] Archive signature verified.\n"));
}

// An offset of 0 with a signature over nothing: the entries before the block are not covered, but
// the block that is read again is not the one that was met.
TEST_F(VerifyArchive, VerifiesWithTheTextThatStandsAtTheOffset) {
  const std::string ofNothing = signatureData("pss_of_nothing_2048");
  EXPECT_FALSE(extract(signedBody() + signatureBlock("0", ofNothing)));
  EXPECT_TRUE(log.contains("sig mismatch"));
  EXPECT_TRUE(extract(signatureBlock("0", ofNothing)));
}

TEST_F(VerifyArchive, RejectsANegativeOffset) {
  for (const char* offset : {"-1", "-29", "-99999999999999999999"}) {
    SCOPED_TRACE(offset);
    EXPECT_FALSE(extract(signedBody() + signatureBlock(offset, signatureHex)));
    EXPECT_FALSE(extract(signatureBlock(offset, signatureData("pss_of_nothing_2048"))));
  }
}

TEST_F(VerifyArchive, WaitsForTheSignedPartThatIsNotThere) {
  const ScopedReplace neverComes(
      timeCalls.sleepMicros, +[](std::uint64_t) { throw Waited(); });
  for (const char* offset : {"99999", "99999999999999999999"}) {
    SCOPED_TRACE(offset);
    EXPECT_THROW(extract(signedBody() + signatureBlock(offset, signatureHex)), Waited);
    ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(
        log.contains("[ExtractArchive] Waiting for the rest of the signed part of the archive\n"));
  }
}

TEST_F(VerifyArchive, ReadsTheSignatureAgainWithLessRoom) {
  const std::string hex = signatureHex + std::string(5000, '0');
  EXPECT_FALSE(extract(signedBody() + signatureBlock("29", hex)));
  EXPECT_TRUE(log.contains("(sig mismatch)\n"));
  EXPECT_FALSE(log.contains("(len mismatch)\n"));
  EXPECT_TRUE(log.contains("Produced a signature of length 2048\n")) << "4095 digits";
  EXPECT_THAT(printed, HasSubstr("***WARNING - STRING TOO LONG FOR ALLOC 4095>4096!"));
}

TEST_F(VerifyArchive, HashesMoreThanOneChunk) {
  writeFile(archive(), std::string(150'001, 'x'));
  EXPECT_FALSE(verifyArchive(archive().c_str(), destDir().c_str(), 150'001, "", key.get()));
  EXPECT_TRUE(
      log.contains("[ExtractArchive] Produced hash: "
                   "217e6e93222dec5d0610fa8fa022cf5d8e68f27528b69592ad24821f1aaef375\n"));
}

// Of "xx...x" again, in two parts, and with a part that is more than what is signed.
TEST_F(VerifyArchive, GoesOnBehindWhatHasBeenHashed) {
  writeFile(archive(), std::string(150'001, 'x'));
  for (const long length : {1L, 70'000L, 150'001L, 150'002L}) {
    HashedPart begun;
    mixed_init(&begun.state);
    const std::string before(static_cast<std::size_t>(length), 'x');
    mixed_process(&begun.state, bytesIn(before), before.size());
    begun.length = length;
    CapturedLog itsLog;
    EXPECT_FALSE(
        verifyArchive(archive().c_str(), destDir().c_str(), 150'001, "", key.get(), &begun));
    EXPECT_TRUE(
        itsLog.contains("[ExtractArchive] Produced hash: "
                        "217e6e93222dec5d0610fa8fa022cf5d8e68f27528b69592ad24821f1aaef375\n"))
        << length;
  }
}

TEST_F(VerifyArchive, RejectsOrWaitsWhereverTheSignatureIsCut) {
  const ScopedReplace noShell(
      processCalls.runShell, +[](const char*) { return 0; });
  const std::size_t textBegins = signedArchive.size() - 513;
  for (std::size_t length = textBegins; length < signedArchive.size() - 1; ++length)
    EXPECT_FALSE(extract(signedArchive.substr(0, length))) << length;
  EXPECT_TRUE(extract(signedArchive.substr(0, signedArchive.size() - 1))) << "no terminator";
}

TEST_F(VerifyArchive, AcceptsTheExampleOfThePage) {
  key = importKey(pageExample("formats/archive.md", 3));
  EXPECT_TRUE(extract(pageExample("formats/archive.md", 2)));
  EXPECT_TRUE(log.contains("[ExtractArchive] Archive signature verified.\n"));
}

class VerifyMissingArchive : public ::testing::Test, public ArchiveSite {};

TEST_F(VerifyMissingArchive, EndsTheProcess) {
  EXPECT_EXIT(verifyArchive(archive().c_str(), destDir().c_str(), 0, "", nullptr),
              ExitedWithCode(1),
              HasSubstr("[ExtractArchive] Failed to extract archive - couldn't open file " +
                        archive() + "\n"));
}

}  // namespace
}  // namespace quillory
