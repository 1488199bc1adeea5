#include "formats/hash_ahead.h"

#include <gtest/gtest.h>

#include <string>

#include "formats/mixed_hash.h"
#include "tests/harness/hex.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::hex;
using testing::TempDir;
using testing::writeFile;

constexpr long kFileLength = 200'000;

// Of the first bytes of "01234567890123...", each half made with another program.
constexpr char kOfNothing[] =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"
    "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470";
constexpr char kOf70000[] =
    "02502db1634f5814e326db4e2593f7991d1c226820b3a210f8a0e41e61380206"
    "ef62009bbac68981aaaec10cbecfe6e61e3577dbb127f02b9a3a2a7186e38c35";
constexpr char kOfAll[] =
    "8ddf9b2317645923bc681372ebcfc99afec63b3a6870db4b6ee7bc1bd56eb262"
    "34059de2038f39149dd775cdaa4b8d52ea20a2e909794cf634974727bcdf85df";

class HashAheadOfAFile : public ::testing::Test {
 protected:
  HashAheadOfAFile() {
    std::string content;
    while (content.size() < kFileLength) content += "0123456789";
    writeFile(file_, content);
  }
  static std::string digestOf(const HashedPart& part) {
    hash_state state = part.state;
    unsigned char digest[64];
    EXPECT_EQ(mixed_done(&state, digest), CRYPT_OK);
    return hex(digest);
  }

  TempDir dir_;
  const std::string file_ = dir_ / "archive";
};

TEST_F(HashAheadOfAFile, EndsWithWhatWasAllowed) {
  HashAhead ahead(file_.c_str());
  ahead.allow(1);
  ahead.allow(70'000);
  const HashedPart& part = ahead.finish();
  EXPECT_EQ(part.length, 70'000);
  EXPECT_EQ(digestOf(part), kOf70000);
}

TEST_F(HashAheadOfAFile, GoesOnFromPieceToPiece) {
  HashAhead ahead(file_.c_str());
  for (long length = 0; length <= kFileLength; length += 1'000) ahead.allow(length);
  EXPECT_EQ(ahead.finish().length, kFileLength);
  EXPECT_EQ(digestOf(ahead.finish()), kOfAll);
}

TEST_F(HashAheadOfAFile, NeverGoesBack) {
  HashAhead ahead(file_.c_str());
  ahead.allow(70'000);
  ahead.allow(-1);
  ahead.allow(10);
  EXPECT_EQ(digestOf(ahead.finish()), kOf70000);
}

TEST_F(HashAheadOfAFile, IsEmptyWhenNothingIsAllowed) {
  HashAhead ahead(file_.c_str());
  EXPECT_EQ(ahead.finish().length, 0);
  EXPECT_EQ(digestOf(ahead.finish()), kOfNothing);
}

TEST_F(HashAheadOfAFile, EndsWithTheFile) {
  HashAhead ahead(file_.c_str());
  ahead.allow(kFileLength + 1);
  EXPECT_EQ(ahead.finish().length, kFileLength);
  EXPECT_EQ(digestOf(ahead.finish()), kOfAll);
}

TEST_F(HashAheadOfAFile, IsEmptyWithoutOne) {
  HashAhead ahead((file_ + ".missing").c_str());
  ahead.allow(10);
  EXPECT_EQ(ahead.finish().length, 0);
  EXPECT_EQ(digestOf(ahead.finish()), kOfNothing);
}

}  // namespace
}  // namespace quillory
