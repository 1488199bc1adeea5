#include "formats/sha256.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::TempDir;
using testing::writeFile;

// The examples of FIPS 180-2.
constexpr char kOfAbc[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr char kSha256OfNothing[] =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr char kOfAMillionAs[] = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(Sha256Hex, IsThatOfTheStandard) {
  EXPECT_EQ(sha256Hex("abc"), kOfAbc);
  EXPECT_EQ(sha256Hex(""), kSha256OfNothing);
  EXPECT_EQ(sha256Hex(std::string(1'000'000, 'a')), kOfAMillionAs);
}

TEST(Sha256, TakesPiecesOfAnySizeWithTheProcessorsInstructionsAndWithout) {
  for (const std::size_t piece : {1u, 63u, 64u, 65u, 1000u, 1'000'000u})
    for (const Sha256Blocks blocks : {sha256BlocksOfProcessor(), Sha256Blocks{nullptr}}) {
      Sha256 digest(blocks);
      std::string left(1'000'000, 'a');
      for (std::string_view rest = left; !rest.empty();
           rest.remove_prefix(std::min(piece, rest.size())))
        digest.update(rest.substr(0, piece));
      digest.update("");
      EXPECT_EQ(digest.hex(), kOfAMillionAs) << piece;
    }
}

TEST(Sha256, IsTheSameOnBothWaysForEveryLength) {
  std::string bytes;
  for (int length = 0; length < 300; ++length) {
    Sha256 fast, slow(nullptr);
    fast.update(bytes);
    slow.update(bytes);
    ASSERT_EQ(fast.hex(), slow.hex()) << length;
    // And behind a part that is no whole block.
    Sha256 fastRest, slowRest(nullptr);
    for (Sha256* digest : {&fastRest, &slowRest}) {
      digest->update("beginning");
      digest->update(bytes);
    }
    ASSERT_EQ(fastRest.hex(), slowRest.hex()) << length;
    bytes.push_back(static_cast<char>(length * 37));
  }
}

TEST(ProcessSha256, RefusesWhatTheLibraryRefuses) {
  const unsigned char byte = 0;
  for (const Sha256Blocks blocks : {sha256BlocksOfProcessor(), Sha256Blocks{nullptr}}) {
    hash_state damaged;
    sha256_init(&damaged);
    damaged.sha256.curlen = 1000;
    EXPECT_EQ(processSha256(&damaged, &byte, 1, blocks), CRYPT_INVALID_ARG);
    hash_state full;
    sha256_init(&full);
    full.sha256.length = ~ulong64{0};
    EXPECT_EQ(processSha256(&full, &byte, 1, blocks), CRYPT_HASH_OVERFLOW);
  }
}

TEST(HashFile, GivesLengthAndDigest) {
  TempDir dir;
  writeFile(dir / "as", std::string(1'000'000, 'a'));
  writeFile(dir / "empty", "");
  const auto as = hashFile(dir / "as");
  ASSERT_TRUE(as);
  EXPECT_EQ(as->length, 1'000'000);
  EXPECT_EQ(as->sha256, kOfAMillionAs);
  const auto empty = hashFile(dir / "empty");
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->length, 0);
  EXPECT_EQ(empty->sha256, kSha256OfNothing);
}

TEST(HashFile, FollowsNoLink) {
  TempDir dir;
  writeFile(dir / "file", "abc");
  std::filesystem::create_symlink("file", dir / "link");
  EXPECT_FALSE(hashFile(dir / "link"));
  EXPECT_FALSE(hashFile(dir / "missing"));
}

TEST(IsSha256Hex, TakesLowerCaseAlone) {
  EXPECT_TRUE(isSha256Hex(kOfAbc));
  EXPECT_FALSE(isSha256Hex(std::string(kOfAbc) + "0"));
  EXPECT_FALSE(isSha256Hex(std::string(kOfAbc).substr(1)));
  EXPECT_FALSE(isSha256Hex(std::string(63, '0') + "A"));
  EXPECT_FALSE(isSha256Hex(std::string(63, '0') + "g"));
  EXPECT_FALSE(isSha256Hex(""));
}

}  // namespace
}  // namespace quillory
