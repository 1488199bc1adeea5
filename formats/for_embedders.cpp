#include "formats/for_embedders.h"

#include "formats/base64_table.h"
#include "formats/keccak_permutation.h"
#include "support/log.h"

namespace quillory {
namespace {

constexpr std::uint32_t kFnvOffsetBasis = 0x811C9DC5;
constexpr std::uint32_t kFnvPrime = 0x01000193;

}  // namespace

void KeccakF(KeccakState* state, const unsigned char* input, int laneCount) {
  // The lanes are little-endian words, and their bytes in memory those of the input.
  auto* const bytes = reinterpret_cast<unsigned char*>(state->lanes);
  for (int i = 0; i < laneCount * 8; ++i) bytes[i] ^= input[i];
  bestKeccakBuild().permute(state->lanes);
}

int crypto_hash(unsigned char* out, const unsigned char* data, std::uint64_t length) {
  KeccakState state;
  Init(&state);
  Update(&state, data, length * 8);
  return Final(&state, out, kKeccakDigestBytes);
}

std::uint32_t fnvHash(const char* data, long length) {
  std::uint32_t hash = kFnvOffsetBasis;
  for (long i = 0; i < length; ++i) {
    const auto byte = static_cast<signed char>(data[i]);
    hash = (hash ^ static_cast<unsigned char>(byte)) * kFnvPrime;
    logMessage("[%d] %d %d\n", static_cast<int>(i), byte, static_cast<std::int32_t>(hash));
  }
  return hash;
}

void base64_cleanup() { decodingTable.reset(); }

}  // namespace quillory
