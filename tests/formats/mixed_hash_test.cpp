#include "formats/mixed_hash.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "formats/for_embedders.h"
#include "formats/keccak.h"
#include "tests/harness/hex.h"

namespace quillory {
namespace {

using testing::hex;
using testing::patternBytes;

std::string mixedOf(const std::vector<unsigned char>& message, std::size_t piece) {
  hash_state md;
  EXPECT_EQ(mixed_init(&md), CRYPT_OK);
  for (std::size_t at = 0; at < message.size(); at += piece) {
    const std::size_t length = std::min(piece, message.size() - at);
    EXPECT_EQ(mixed_process(&md, message.data() + at, length), CRYPT_OK);
  }
  unsigned char digest[64];
  EXPECT_EQ(mixed_done(&md, digest), CRYPT_OK);
  return hex(digest);
}

TEST(MixedHash, OfTheEmptyMessage) {
  EXPECT_EQ(mixedOf({}, 1),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"
            "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470");
}

TEST(MixedHash, OfAPublishedMessage) {
  EXPECT_EQ(mixedOf({'a', 'b', 'c'}, 3),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"
            "4e03657aea45a94fc7d47ba826c8d667c0d1e6e33a64a036ec44f58fa12d6c45");
}

TEST(MixedHash, IsSha256FollowedByKeccak256WhateverThePieces) {
  const std::vector<unsigned char> message = patternBytes(100'000);
  hash_state md;
  unsigned char expected[64];
  sha256_init(&md);
  sha256_process(&md, message.data(), message.size());
  sha256_done(&md, expected);
  crypto_hash(expected + 32, message.data(), message.size());
  for (const std::size_t piece : {1U, 63U, 64U, 136U, 16384U, 16385U, 40000U, 100000U}) {
    SCOPED_TRACE(piece);
    EXPECT_EQ(mixedOf(message, piece), hex(expected));
  }
}

TEST(MixedProcess, FailsAfterDoneWithAllBitsSet) {
  hash_state md;
  unsigned char digest[64] = {};
  mixed_init(&md);
  mixed_done(&md, digest);
  EXPECT_EQ(mixed_process(&md, digest, 1), -1);
  EXPECT_EQ(mixed_process(&md, digest, 0), -1);
}

TEST(MixedProcess, ReportsTheErrorOfTheSha256HalfFirst) {
  hash_state md;
  unsigned char digest[64] = {};
  mixed_init(&md);
  mixed_done(&md, digest);
  md.sha256.curlen = 1000;  // a damaged state, which the library refuses
  EXPECT_EQ(mixed_process(&md, digest, 1), CRYPT_INVALID_ARG);
}

TEST(MixedDone, SucceedsWhateverThePartsSay) {
  hash_state md;
  unsigned char digest[64];
  mixed_init(&md);
  EXPECT_EQ(mixed_done(&md, digest), CRYPT_OK);
  EXPECT_EQ(mixed_done(&md, digest), CRYPT_OK);
}

TEST(MixedDone, WritesExactlySixtyFourBytes) {
  hash_state md;
  std::vector<unsigned char> out(66, 0xee);
  mixed_init(&md);
  mixed_done(&md, out.data() + 1);
  EXPECT_EQ(out.front(), 0xee);
  EXPECT_EQ(out.back(), 0xee);
}

TEST(MixedInit, OfANullStateFailsTheLibrarysArgumentCheck) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(mixed_init(nullptr), ::testing::KilledBySignal(SIGABRT),
              "LTC_ARGCHK 'md != NULL' failure");
}

TEST(MixedDescriptor, HasTheAgreedFields) {
  const ltc_hash_descriptor& d = mixed_descriptor;
  EXPECT_STREQ(d.name, "mixed");
  EXPECT_EQ(d.ID, 20);
  EXPECT_EQ(d.hashsize, 64U);
  EXPECT_EQ(d.blocksize, 64U);
  EXPECT_EQ(std::vector<unsigned long>(d.OID, d.OID + d.OIDlen),
            (std::vector<unsigned long>{1, 3, 14, 3, 2, 52}));
  EXPECT_EQ(d.init, &mixed_init);
  EXPECT_EQ(d.process, &mixed_process);
  EXPECT_EQ(d.done, &mixed_done);
  EXPECT_EQ(d.test, nullptr);
  EXPECT_EQ(d.hmac_block, nullptr);
}

TEST(MixedDescriptor, CanBeRegisteredBesideTheOther) {
  const int keccak = register_hash(&sha3_256_descriptor);
  const int mixed = register_hash(&mixed_descriptor);
  EXPECT_NE(keccak, mixed);
  EXPECT_EQ(find_hash("sha3_256"), keccak);
  EXPECT_EQ(find_hash("mixed"), mixed);
  EXPECT_EQ(hash_is_valid(mixed), CRYPT_OK);
  unregister_hash(&mixed_descriptor);
  unregister_hash(&sha3_256_descriptor);
}

}  // namespace
}  // namespace quillory
