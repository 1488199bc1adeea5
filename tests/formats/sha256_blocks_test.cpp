#include "formats/sha256_blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace quillory {
namespace {

constexpr std::array<std::uint32_t, 8> kBeginning = {
    0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

// The examples of FIPS 180-2, padded by hand: "abc" in one block, and one of two blocks.
TEST(Sha256BlocksOfProcessor, GivesTheStatesOfTheStandard) {
  const Sha256Blocks take = sha256BlocksOfProcessor();
  if (take == nullptr) GTEST_SKIP() << "this processor has no instructions for it";
  std::string one = "abc\x80" + std::string(60, '\0');
  one[63] = 24;
  auto state = kBeginning;
  take(state.data(), reinterpret_cast<const unsigned char*>(one.data()), 1);
  EXPECT_EQ(state, (std::array<std::uint32_t, 8>{0xba7816bf, 0x8f01cfea, 0x414140de, 0x5dae2223,
                                                 0xb00361a3, 0x96177a9c, 0xb410ff61, 0xf20015ad}));
  std::string two = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq\x80";
  two.resize(128);
  two[126] = '\x01';
  two[127] = '\xC0';
  state = kBeginning;
  take(state.data(), reinterpret_cast<const unsigned char*>(two.data()), 2);
  EXPECT_EQ(state, (std::array<std::uint32_t, 8>{0x248d6a61, 0xd20638b8, 0xe5c02693, 0x0c3e6039,
                                                 0xa33ce459, 0x64ff2167, 0xf6ecedd4, 0x19db06c1}));
  take(state.data(), nullptr, 0);
  EXPECT_EQ(state[0], 0x248d6a61u);
}

}  // namespace
}  // namespace quillory
