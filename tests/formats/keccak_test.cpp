#include "formats/keccak.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <string_view>
#include <vector>

#include "formats/for_embedders.h"
#include "formats/keccak_permutation.h"
#include "tests/formats/keccak_reference.h"
#include "tests/harness/hex.h"

namespace quillory {
namespace {

using testing::Bits;
using testing::hex;
using testing::KeccakReference;
using testing::patternBytes;

std::string keccak256(std::string_view message) {
  unsigned char digest[kKeccakDigestBytes];
  crypto_hash(digest, reinterpret_cast<const unsigned char*>(message.data()), message.size());
  return hex(digest);
}

/// The bits of `bytes`, each byte from its lowest bit up, as Keccak reads a byte string.
Bits bitsOf(const std::vector<unsigned char>& bytes) {
  Bits bits;
  for (const unsigned char byte : bytes) {
    for (int i = 0; i < 8; ++i) bits.push_back((byte >> i & 1) != 0);
  }
  return bits;
}

/// The first `count` bits of `bits` as Update() takes them: a last partial byte stands in the top
/// bits.
std::vector<unsigned char> packed(const Bits& bits, std::size_t count) {
  std::vector<unsigned char> bytes((count + 7) / 8);
  const std::size_t partial = count % 8;
  for (std::size_t i = 0; i < count; ++i) {
    const bool isInPartialByte = i >= count - partial;
    const std::size_t place = i % 8 + (isInPartialByte ? 8 - partial : 0);
    if (bits[i]) bytes[i / 8] |= static_cast<unsigned char>(1U << place);
  }
  return bytes;
}

std::string digestOfBits(const Bits& bits, std::size_t count) {
  const std::vector<unsigned char> input = packed(bits, count);
  KeccakState state;
  Init(&state);
  EXPECT_EQ(Update(&state, input.data(), count), 0);
  unsigned char digest[kKeccakDigestBytes];
  EXPECT_EQ(Final(&state, digest, sizeof digest), 0);
  return hex(digest);
}

TEST(Keccak256, MatchesPublishedDigests) {
  EXPECT_EQ(keccak256("abc"), "4e03657aea45a94fc7d47ba826c8d667c0d1e6e33a64a036ec44f58fa12d6c45");
  EXPECT_EQ(keccak256("\xcc"), "eead6dbfc7340a56caedc044696a168870549a6a7f6f56961e84a54bd9970b8a");
  EXPECT_EQ(keccak256("The quick brown fox jumps over the lazy dog"),
            "4d741b6f1eb29cb2a9b9911c82f56fa8d73b04959d3d9d222895df6c0b28aa15");
}

TEST(Keccak256, OfTheEmptyMessageIsNotTheFipsDigest) {
  EXPECT_EQ(keccak256(""), "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470");
  EXPECT_NE(keccak256(""), "a7ffc6f8bf1ed76651c14756a061d662f580ff4de43b49fa82d80a4b80f8434a");
}

TEST(Keccak256, MatchesTheTextbookAroundTheBlockSize) {
  for (const std::size_t length : {1U, 7U, 8U, 134U, 135U, 136U, 137U, 271U, 272U, 273U, 1000U}) {
    SCOPED_TRACE(length);
    const std::vector<unsigned char> message = patternBytes(length);
    unsigned char digest[kKeccakDigestBytes];
    EXPECT_EQ(crypto_hash(digest, message.data(), length), 0);
    EXPECT_EQ(hex(digest), hex(KeccakReference::digest(bitsOf(message), kKeccakDigestBytes)));
  }
}

TEST(Keccak256, PadsAMessageOf135BytesWithOneByte) {
  std::vector<unsigned char> block = patternBytes(135);
  unsigned char digest[kKeccakDigestBytes];
  crypto_hash(digest, block.data(), block.size());
  block.push_back(0x81);
  KeccakState state;
  Init(&state);
  KeccakF(&state, block.data(), 17);
  EXPECT_EQ(hex(digest), hex(state.lanes, kKeccakDigestBytes));
}

TEST(Keccak256, PadsAMessageOf136BytesWithASecondBlock) {
  const std::vector<unsigned char> message = patternBytes(136);
  unsigned char digest[kKeccakDigestBytes];
  crypto_hash(digest, message.data(), message.size());
  std::vector<unsigned char> padding(136);
  padding.front() = 0x01;
  padding.back() = 0x80;
  KeccakState state;
  Init(&state);
  KeccakF(&state, message.data(), 17);
  KeccakF(&state, padding.data(), 17);
  EXPECT_EQ(hex(digest), hex(state.lanes, kKeccakDigestBytes));
}

// FIPS 202 appends the bits 0 and 1 before the same padding, so that a core which counts bits also
// yields SHA3-256, for which the library has an implementation of its own.
TEST(Update, OfTheFipsDomainBitsGivesTheFipsDigest) {
  for (std::size_t length = 0; length < 300; ++length) {
    SCOPED_TRACE(length);
    const std::vector<unsigned char> message = patternBytes(length);
    KeccakState state;
    Init(&state);
    ASSERT_EQ(Update(&state, message.data(), length * 8), 0);
    const unsigned char domainBits = 0x80;
    ASSERT_EQ(Update(&state, &domainBits, 2), 0);
    unsigned char digest[kKeccakDigestBytes];
    ASSERT_EQ(Final(&state, digest, sizeof digest), 0);

    hash_state md;
    unsigned char expected[kKeccakDigestBytes];
    ASSERT_EQ(::sha3_256_desc.init(&md), CRYPT_OK);
    ASSERT_EQ(::sha3_256_desc.process(&md, message.data(), length), CRYPT_OK);
    ASSERT_EQ(::sha3_256_desc.done(&md, expected), CRYPT_OK);
    ASSERT_EQ(hex(digest), hex(expected));
  }
}

TEST(Update, GivesTheSameDigestForPiecesOfAnySize) {
  const std::vector<unsigned char> message = patternBytes(1000);
  unsigned char whole[kKeccakDigestBytes];
  crypto_hash(whole, message.data(), message.size());
  for (const std::size_t piece : {1U, 2U, 3U, 7U, 8U, 64U, 135U, 136U, 137U, 300U, 999U}) {
    SCOPED_TRACE(piece);
    KeccakState state;
    Init(&state);
    for (std::size_t at = 0; at < message.size(); at += piece) {
      const std::size_t length = std::min(piece, message.size() - at);
      ASSERT_EQ(Update(&state, message.data() + at, length * 8), 0);
    }
    unsigned char digest[kKeccakDigestBytes];
    Final(&state, digest, sizeof digest);
    EXPECT_EQ(hex(digest), hex(whole));
  }
}

TEST(Update, TakesTheTopBitsOfALastPartialByte) {
  const Bits bits = bitsOf(patternBytes(137));
  for (const std::size_t count : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 9U, 15U, 1081U, 1086U, 1089U}) {
    SCOPED_TRACE(count);
    const Bits message(bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(count));
    EXPECT_EQ(digestOfBits(bits, count), hex(KeccakReference::digest(message, 32)));
  }
}

TEST(Update, IgnoresTheLowBitsOfALastPartialByte) {
  const unsigned char clean[] = {0xa0};
  const unsigned char noisy[] = {0xbf};
  std::string digests[2];
  for (int i = 0; i < 2; ++i) {
    KeccakState state;
    Init(&state);
    Update(&state, i == 0 ? clean : noisy, 3);
    unsigned char digest[kKeccakDigestBytes];
    Final(&state, digest, sizeof digest);
    digests[i] = hex(digest);
  }
  EXPECT_EQ(digests[0], digests[1]);
}

TEST(Update, RefusesMoreInputAfterAPartialByte) {
  KeccakState state;
  Init(&state);
  const unsigned char byte = 0xff;
  ASSERT_EQ(Update(&state, &byte, 3), 0);
  const KeccakState before = state;
  EXPECT_EQ(Update(&state, &byte, 8), 1);
  EXPECT_EQ(Update(&state, &byte, 0), 1);
  EXPECT_EQ(hex(state.lanes, sizeof state.lanes), hex(before.lanes, sizeof before.lanes));
  EXPECT_EQ(state.bitsInQueue, 3);
}

TEST(Update, RefusesMoreInputAfterTheDigest) {
  KeccakState state;
  Init(&state);
  unsigned char digest[kKeccakDigestBytes];
  Final(&state, digest, sizeof digest);
  EXPECT_EQ(state.bitsInQueue, -1);
  EXPECT_EQ(Update(&state, digest, 8), 1);
  EXPECT_EQ(Update(&state, digest, 0), 1);
}

TEST(Update, CountsTheBitsOfThePartlyFilledBlock) {
  const std::vector<unsigned char> message = patternBytes(300);
  KeccakState state;
  Init(&state);
  EXPECT_EQ(state.bitsInQueue, 0);
  Update(&state, message.data(), 5 * 8);
  EXPECT_EQ(state.bitsInQueue, 40);
  Update(&state, message.data(), 131 * 8);
  EXPECT_EQ(state.bitsInQueue, 0);
  Update(&state, message.data(), 200 * 8);
  EXPECT_EQ(state.bitsInQueue, (200 - 136) * 8);
}

TEST(Final, TakesASecondBlockWhenOneBitIsLeftForThePadding) {
  const Bits bits = bitsOf(patternBytes(136));
  const Bits message(bits.begin(), bits.begin() + 1087);
  EXPECT_EQ(digestOfBits(bits, 1087), hex(KeccakReference::digest(message, 32)));
}

TEST(Final, SqueezesAsMuchAsIsAskedFor) {
  const std::vector<unsigned char> message = patternBytes(10);
  for (const std::size_t length : {0U, 1U, 135U, 136U, 137U, 272U, 500U}) {
    SCOPED_TRACE(length);
    KeccakState state;
    Init(&state);
    Update(&state, message.data(), message.size() * 8);
    std::vector<unsigned char> out(length + 1, 0xee);
    EXPECT_EQ(Final(&state, out.data(), static_cast<int>(length)), 0);
    EXPECT_EQ(out.back(), 0xee);
    out.pop_back();
    EXPECT_EQ(hex(out), hex(KeccakReference::digest(bitsOf(message), length)));
  }
}

TEST(Final, RefusesASecondDigest) {
  KeccakState state;
  Init(&state);
  unsigned char digest[kKeccakDigestBytes] = {};
  EXPECT_EQ(Final(&state, digest, sizeof digest), 0);
  unsigned char untouched[kKeccakDigestBytes] = {};
  EXPECT_EQ(Final(&state, untouched, sizeof untouched), 1);
  EXPECT_EQ(hex(untouched), std::string(64, '0'));
}

TEST(KeccakF, XorsTheGivenLanesOnlyAndPermutes) {
  const std::vector<unsigned char> input = patternBytes(200);
  for (int lanes = 0; lanes <= 25; ++lanes) {
    SCOPED_TRACE(lanes);
    KeccakState state;
    Init(&state);
    KeccakF(&state, lanes == 0 ? nullptr : input.data(), lanes);

    KeccakReference::State expected{};
    const Bits bits = bitsOf(input);
    for (std::size_t i = 0; i < static_cast<std::size_t>(lanes) * 64; ++i) {
      KeccakReference::bitAt(expected, i) = bits[i];
    }
    KeccakReference::permute(expected);
    for (std::size_t i = 0; i < 1600; ++i) {
      const bool bit = (state.lanes[i / 64] >> i % 64 & 1) != 0;
      ASSERT_EQ(bit, KeccakReference::bitAt(expected, i)) << "bit " << i;
    }
  }
}

TEST(KeccakBuilds, AgreeWithEachOther) {
  const std::vector<unsigned char> blocks = patternBytes(5 * 136);
  const KeccakBuild& plain = allKeccakBuilds().back();
  EXPECT_TRUE(plain.isUsable());
  for (const KeccakBuild& build : allKeccakBuilds()) {
    if (!build.isUsable()) continue;
    SCOPED_TRACE(build.name);
    std::uint64_t expected[25] = {1, 2, 3};
    std::uint64_t lanes[25] = {1, 2, 3};
    plain.absorbBlocks(expected, blocks.data(), 5);
    build.absorbBlocks(lanes, blocks.data(), 5);
    EXPECT_EQ(hex(lanes, sizeof lanes), hex(expected, sizeof expected));
    plain.permute(expected);
    build.permute(lanes);
    EXPECT_EQ(hex(lanes, sizeof lanes), hex(expected, sizeof expected));
  }
}

TEST(KeccakBuilds, TheBestOneIsTheFirstThatThisProcessorRuns) {
  for (const KeccakBuild& build : allKeccakBuilds()) {
    if (!build.isUsable()) continue;
    EXPECT_EQ(&bestKeccakBuild(), &build);
    return;
  }
  FAIL() << "no usable build";
}

TEST(Sha3_256Descriptor, HasTheAgreedFields) {
  const ltc_hash_descriptor& d = sha3_256_descriptor;
  EXPECT_STREQ(d.name, "sha3_256");
  EXPECT_EQ(d.ID, 21);
  EXPECT_EQ(d.hashsize, 32U);
  EXPECT_EQ(d.blocksize, 64U);  // not the rate of 136: declared so on purpose
  EXPECT_EQ(std::vector<unsigned long>(d.OID, d.OID + d.OIDlen),
            (std::vector<unsigned long>{1, 3, 14, 3, 2, 53}));
  EXPECT_EQ(d.init, &quillory::sha3_256_init);
  EXPECT_EQ(d.process, &quillory::sha3_256_process);
  EXPECT_EQ(d.done, &quillory::sha3_256_done);
  EXPECT_EQ(d.test, nullptr);
  EXPECT_EQ(d.hmac_block, nullptr);
}

TEST(Sha3_256Descriptor, WorksThroughTheLibrarysRegistry) {
  const int index = register_hash(&sha3_256_descriptor);
  ASSERT_GE(index, 0);
  EXPECT_EQ(find_hash("sha3_256"), index);
  unsigned char digest[kKeccakDigestBytes];
  unsigned long length = sizeof digest;
  ASSERT_EQ(hash_memory(index, reinterpret_cast<const unsigned char*>("abc"), 3, digest, &length),
            CRYPT_OK);
  EXPECT_EQ(hex(digest), keccak256("abc"));
  EXPECT_EQ(unregister_hash(&sha3_256_descriptor), CRYPT_OK);
}

TEST(Sha3_256Process, FailsAfterDoneWithAllBitsSet) {
  hash_state md;
  unsigned char digest[kKeccakDigestBytes];
  ASSERT_EQ(quillory::sha3_256_init(&md), CRYPT_OK);
  ASSERT_EQ(quillory::sha3_256_process(&md, digest, 0), CRYPT_OK);
  ASSERT_EQ(quillory::sha3_256_done(&md, digest), CRYPT_OK);
  EXPECT_EQ(quillory::sha3_256_process(&md, digest, 1), -1);
  EXPECT_EQ(quillory::sha3_256_process(&md, digest, 0), -1);
  EXPECT_EQ(quillory::sha3_256_done(&md, digest), -1);
}

TEST(Sha3_256Init, OfANullStateFailsTheLibrarysArgumentCheck) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(quillory::sha3_256_init(nullptr), ::testing::KilledBySignal(SIGABRT),
              "LTC_ARGCHK 'md != NULL' failure");
}

}  // namespace
}  // namespace quillory
