// The rounds of Keccak-f[1600] in plain C++. Inlined into functions that are compiled for different
// instruction sets (keccak_permutation.cpp).
#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quillory::keccak {

static_assert(std::endian::native == std::endian::little, "lanes are read as the machine's words");

inline constexpr int kRounds = 24;
inline constexpr int kRateLanes = 17;

inline constexpr std::uint64_t kRoundConstants[kRounds] = {
    0x0000000000000001, 0x0000000000008082, 0x800000000000808a, 0x8000000080008000,
    0x000000000000808b, 0x0000000080000001, 0x8000000080008081, 0x8000000000008009,
    0x000000000000008a, 0x0000000000000088, 0x0000000080008009, 0x000000008000000a,
    0x000000008000808b, 0x800000000000008b, 0x8000000000008089, 0x8000000000008003,
    0x8000000000008002, 0x8000000000000080, 0x000000000000800a, 0x800000008000000a,
    0x8000000080008081, 0x8000000000008080, 0x0000000080000001, 0x8000000080008008};

using Lane = std::uint64_t;

/// Chi on one row.
[[gnu::always_inline]] inline void writeRow(Lane* row, Lane b0, Lane b1, Lane b2, Lane b3,
                                            Lane b4) {
  row[0] = b0 ^ (~b1 & b2);
  row[1] = b1 ^ (~b2 & b3);
  row[2] = b2 ^ (~b3 & b4);
  row[3] = b3 ^ (~b4 & b0);
  row[4] = b4 ^ (~b0 & b1);
}

/// One round from `a` to `e`. Lane (x, y) of the reference is a[x + 5 * y]; a row of `e` is written
/// from the five lanes that rho and pi bring there.
[[gnu::always_inline]] inline void round(const Lane (&a)[25], Lane (&e)[25], Lane constant) {
  const Lane c0 = a[0] ^ a[5] ^ a[10] ^ a[15] ^ a[20];
  const Lane c1 = a[1] ^ a[6] ^ a[11] ^ a[16] ^ a[21];
  const Lane c2 = a[2] ^ a[7] ^ a[12] ^ a[17] ^ a[22];
  const Lane c3 = a[3] ^ a[8] ^ a[13] ^ a[18] ^ a[23];
  const Lane c4 = a[4] ^ a[9] ^ a[14] ^ a[19] ^ a[24];
  const Lane d0 = c4 ^ std::rotl(c1, 1);
  const Lane d1 = c0 ^ std::rotl(c2, 1);
  const Lane d2 = c1 ^ std::rotl(c3, 1);
  const Lane d3 = c2 ^ std::rotl(c4, 1);
  const Lane d4 = c3 ^ std::rotl(c0, 1);

  writeRow(e, a[0] ^ d0, std::rotl(a[6] ^ d1, 44), std::rotl(a[12] ^ d2, 43),
           std::rotl(a[18] ^ d3, 21), std::rotl(a[24] ^ d4, 14));
  e[0] ^= constant;
  writeRow(e + 5, std::rotl(a[3] ^ d3, 28), std::rotl(a[9] ^ d4, 20), std::rotl(a[10] ^ d0, 3),
           std::rotl(a[16] ^ d1, 45), std::rotl(a[22] ^ d2, 61));
  writeRow(e + 10, std::rotl(a[1] ^ d1, 1), std::rotl(a[7] ^ d2, 6), std::rotl(a[13] ^ d3, 25),
           std::rotl(a[19] ^ d4, 8), std::rotl(a[20] ^ d0, 18));
  writeRow(e + 15, std::rotl(a[4] ^ d4, 27), std::rotl(a[5] ^ d0, 36), std::rotl(a[11] ^ d1, 10),
           std::rotl(a[17] ^ d2, 15), std::rotl(a[23] ^ d3, 56));
  writeRow(e + 20, std::rotl(a[2] ^ d2, 62), std::rotl(a[8] ^ d3, 55), std::rotl(a[14] ^ d4, 39),
           std::rotl(a[15] ^ d0, 41), std::rotl(a[21] ^ d1, 2));
}

[[gnu::always_inline]] inline void permute(Lane (&a)[25]) {
  Lane e[25];
  for (int i = 0; i < kRounds; i += 2) {
    round(a, e, kRoundConstants[i]);
    round(e, a, kRoundConstants[i + 1]);
  }
}

[[gnu::always_inline]] inline void permuteLanes(Lane* lanes) {
  Lane a[25];
  std::memcpy(a, lanes, sizeof a);
  permute(a);
  std::memcpy(lanes, a, sizeof a);
}

[[gnu::always_inline]] inline void absorbBlocks(Lane* lanes, const unsigned char* blocks,
                                                std::size_t count) {
  Lane a[25];
  std::memcpy(a, lanes, sizeof a);
  for (; count > 0; --count) {
    for (int i = 0; i < kRateLanes; ++i, blocks += sizeof(Lane)) {
      Lane input;
      std::memcpy(&input, blocks, sizeof input);
      a[i] ^= input;
    }
    permute(a);
  }
  std::memcpy(lanes, a, sizeof a);
}

}  // namespace quillory::keccak
