#include "formats/keccak_permutation.h"

#include <algorithm>

#include "formats/keccak_rounds.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace quillory {
namespace {

void permutePlain(std::uint64_t* lanes) { keccak::permuteLanes(lanes); }

void absorbPlain(std::uint64_t* lanes, const unsigned char* blocks, std::size_t count) {
  keccak::absorbBlocks(lanes, blocks, count);
}

#if defined(__x86_64__)
// The same code with andn (a chi step without a separate complement) and rorx (a rotation without a
// copy before it): 1.4 times as fast. A form with one row a 512-bit register was measured too; it
// waits for its shuffles and comes out slower than this one.
[[gnu::target("bmi,bmi2")]] void permuteBmi(std::uint64_t* lanes) { keccak::permuteLanes(lanes); }

[[gnu::target("bmi,bmi2")]] void absorbBmi(std::uint64_t* lanes, const unsigned char* blocks,
                                           std::size_t count) {
  keccak::absorbBlocks(lanes, blocks, count);
}

// Not by __builtin_cpu_supports(), whose run-time part not every compiler for macOS brings.
bool hasBmi() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  constexpr unsigned kBoth = bit_BMI | bit_BMI2;
  return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & kBoth) == kBoth;
}
#endif

bool isAlwaysUsable() { return true; }

constexpr KeccakBuild kBuilds[] = {
#if defined(__x86_64__)
    {"bmi", hasBmi, permuteBmi, absorbBmi},
#endif
    {"plain", isAlwaysUsable, permutePlain, absorbPlain},
};

}  // namespace

std::span<const KeccakBuild> allKeccakBuilds() { return kBuilds; }

const KeccakBuild& bestKeccakBuild() {
  static const KeccakBuild& best =
      *std::ranges::find_if(kBuilds, [](const KeccakBuild& build) { return build.isUsable(); });
  return best;
}

}  // namespace quillory
