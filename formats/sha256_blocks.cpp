#include "formats/sha256_blocks.h"

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>

#include <array>
#endif

namespace quillory {

#if defined(__x86_64__)
namespace {

constexpr std::size_t kBlock = 64;

// The round constants of FIPS 180-4, four to a register.
alignas(16) constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

const __m128i* vectorAt(const void* bytes) { return static_cast<const __m128i*>(bytes); }

// The instructions want the words a b e f in one register and c d g h in the other.
struct Halves {
  __m128i abef, cdgh;
};

[[gnu::target("sha,sse4.1")]] inline Halves halvesOf(const std::uint32_t* state) {
  const __m128i cdab = _mm_shuffle_epi32(_mm_loadu_si128(vectorAt(state)), 0xB1);
  const __m128i efgh = _mm_shuffle_epi32(_mm_loadu_si128(vectorAt(state + 4)), 0x1B);
  return {_mm_alignr_epi8(cdab, efgh, 8), _mm_blend_epi16(efgh, cdab, 0xF0)};
}

[[gnu::target("sha,sse4.1")]] inline void storeHalves(const Halves& halves, std::uint32_t* state) {
  const __m128i feba = _mm_shuffle_epi32(halves.abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(halves.cdgh, 0xB1);
  auto* words = reinterpret_cast<__m128i*>(state);
  _mm_storeu_si128(words, _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(words + 1, _mm_alignr_epi8(dchg, feba, 8));
}

[[gnu::target("sha,sse4.1")]] inline Halves withBlock(Halves halves, const unsigned char* block) {
  const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
  __m128i words[4];
#pragma GCC unroll 4
  for (std::size_t i = 0; i < 4; ++i)
    words[i] = _mm_shuffle_epi8(_mm_loadu_si128(vectorAt(block + 16 * i)), bigEndian);
#pragma GCC unroll 16
  for (std::size_t i = 0; i < 16; ++i) {
    __m128i& now = words[i % 4];
    const __m128i& before = words[(i + 3) % 4];
    const __m128i sum = _mm_add_epi32(now, _mm_load_si128(vectorAt(&kRounds[4 * i])));
    halves.cdgh = _mm_sha256rnds2_epu32(halves.cdgh, halves.abef, sum);
    halves.abef = _mm_sha256rnds2_epu32(halves.abef, halves.cdgh, _mm_shuffle_epi32(sum, 0x0E));
    // The words that these four rounds are done with become those of sixteen rounds later.
    const __m128i seventh = _mm_alignr_epi8(before, words[(i + 2) % 4], 4);
    now = _mm_sha256msg2_epu32(
        _mm_add_epi32(_mm_sha256msg1_epu32(now, words[(i + 1) % 4]), seventh), before);
  }
  return halves;
}

[[gnu::target("sha,sse4.1")]] void takeBlocks(std::uint32_t* state, const unsigned char* blocks,
                                              std::size_t count) {
  Halves halves = halvesOf(state);
  for (; count > 0; --count, blocks += kBlock) {
    const Halves more = withBlock(halves, blocks);
    halves = {_mm_add_epi32(halves.abef, more.abef), _mm_add_epi32(halves.cdgh, more.cdgh)};
  }
  storeHalves(halves, state);
}

bool hasInstructions() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  constexpr unsigned kSha = 1U << 29;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & bit_SSE4_1) == 0) return false;
  return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & kSha) != 0;
}

}  // namespace

Sha256Blocks sha256BlocksOfProcessor() {
  static const bool isThere = hasInstructions();
  return isThere ? takeBlocks : nullptr;
}
#else
Sha256Blocks sha256BlocksOfProcessor() { return nullptr; }
#endif

}  // namespace quillory
