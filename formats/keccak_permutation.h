// Keccak-f[1600] in the fastest build that the processor at hand can run.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

namespace quillory {

/// The permutation, built for one instruction set.
struct KeccakBuild {
  const char* name;
  /// Whether this processor can run it.
  bool (*isUsable)();
  void (*permute)(std::uint64_t* lanes);
  /// For each of `count` blocks of 17 little-endian lanes: XORs it into the state and permutes.
  void (*absorbBlocks)(std::uint64_t* lanes, const unsigned char* blocks, std::size_t count);
};

/// Every build for this kind of machine, the fastest first; the last one runs anywhere.
std::span<const KeccakBuild> allKeccakBuilds();

/// The first usable one; chosen once.
const KeccakBuild& bestKeccakBuild();

}  // namespace quillory
