// Keccak-256 as the textbook has it, one bit at a time: slow, and sharing nothing with the code
// under test. Round constants and rotations are derived here, not listed.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillory::testing {

using Bits = std::vector<bool>;

class KeccakReference {
 public:
  /// The state as 5 x 5 lanes of 64 bits, indexed [x][y][z].
  using State = std::array<std::array<std::array<bool, 64>, 5>, 5>;

  static void permute(State& state) {
    unsigned lfsr = 1;
    for (int round = 0; round < 24; ++round) {
      theta(state);
      rhoAndPi(state);
      chi(state);
      iota(state, lfsr);
    }
  }

  /// Bit `i` of the sponge's string.
  static bool& bitAt(State& state, std::size_t i) { return state[i / 64 % 5][i / 320][i % 64]; }

  /// The digest of `message` (first bit first) as `outBytes` bytes.
  static std::vector<unsigned char> digest(Bits message, std::size_t outBytes) {
    constexpr std::size_t kRate = 1088;
    message.push_back(true);
    while (message.size() % kRate != kRate - 1) message.push_back(false);
    message.push_back(true);

    State state{};
    for (std::size_t block = 0; block < message.size(); block += kRate) {
      for (std::size_t i = 0; i < kRate; ++i) bitAt(state, i) ^= message[block + i];
      permute(state);
    }
    std::vector<unsigned char> out(outBytes);
    for (std::size_t i = 0; i < outBytes * 8; ++i) {
      if (i > 0 && i % kRate == 0) permute(state);
      if (bitAt(state, i % kRate)) out[i / 8] |= static_cast<unsigned char>(1U << i % 8);
    }
    return out;
  }

 private:
  static void theta(State& a) {
    const State before = a;
    const auto parity = [&before](std::size_t x, std::size_t z) {
      bool sum = false;
      for (std::size_t y = 0; y < 5; ++y) sum ^= before[x][y][z];
      return sum;
    };
    for (std::size_t x = 0; x < 5; ++x) {
      for (std::size_t z = 0; z < 64; ++z) {
        const bool change = parity((x + 4) % 5, z) ^ parity((x + 1) % 5, (z + 63) % 64);
        for (std::size_t y = 0; y < 5; ++y) a[x][y][z] ^= change;
      }
    }
  }

  static void rhoAndPi(State& a) {
    State rotated = a;
    std::size_t x = 1;
    std::size_t y = 0;
    for (std::size_t t = 0; t < 24; ++t) {
      const std::size_t offset = (t + 1) * (t + 2) / 2 % 64;
      for (std::size_t z = 0; z < 64; ++z) rotated[x][y][z] = a[x][y][(z + 64 - offset) % 64];
      const std::size_t nextY = (2 * x + 3 * y) % 5;
      x = y;
      y = nextY;
    }
    for (x = 0; x < 5; ++x) {
      for (y = 0; y < 5; ++y) a[x][y] = rotated[(x + 3 * y) % 5][x];
    }
  }

  static void chi(State& a) {
    const State before = a;
    for (std::size_t x = 0; x < 5; ++x) {
      for (std::size_t y = 0; y < 5; ++y) {
        for (std::size_t z = 0; z < 64; ++z) {
          a[x][y][z] = before[x][y][z] ^ (!before[(x + 1) % 5][y][z] && before[(x + 2) % 5][y][z]);
        }
      }
    }
  }

  // The constants come from a shift register over x^8 + x^6 + x^5 + x^4 + 1, seven steps a round.
  static void iota(State& a, unsigned& lfsr) {
    for (unsigned j = 0; j < 7; ++j) {
      if ((lfsr & 1) != 0) a[0][0][(1U << j) - 1] ^= true;
      lfsr = (lfsr << 1) ^ ((lfsr >> 7) * 0x171);
    }
  }
};

}  // namespace quillory::testing
