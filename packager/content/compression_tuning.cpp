#include "packager/content/compression_tuning.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

// Up to this level packing is to be quick: a longer search is not.
constexpr int kLastFastLevel = 5;
constexpr std::size_t kSmallestDictionary = std::size_t{64} << 10;
// Of the levels, as the xz tools have them.
constexpr std::array kDictionaryBits = {18, 20, 21, 22, 22, 23, 23, 24, 25, 26};

constexpr std::array<std::string_view, 3> kProgramStarts = {
    "\x7f"
    "ELF",
    "\xcf\xfa\xed\xfe", "\xca\xfe\xba\xbe"};

// A class begins as universal programs do, but is small and lies in a jar.
bool isProgram(const ContentEntry& entry) {
  constexpr std::uint64_t kSmallest = 4096;
  if (entry.kind != ContentEntry::Kind::kFile || entry.size < kSmallest) {
    return false;
  }
  const std::string start = readBeginningOf(entry.source, 4);
  return std::find(kProgramStarts.begin(), kProgramStarts.end(), start) != kProgramStarts.end();
}

}  // namespace

LzmaTuning tuningFor(const ContentTree& content, int level) {
  std::uint64_t total = 0;
  std::uint64_t programs = 0;
  for (const auto& [path, entry] : content.entries()) {
    // With the records around it.
    total += entry.size + path.size() + 16;
    programs += isProgram(entry) ? entry.size : 0;
  }
  LzmaTuning tuning;
  if (programs * 2 < total) {
    tuning.literalContextBits = 4;
    tuning.positionBits = 0;
  }
  const auto ofLevel = std::size_t{1} << kDictionaryBits.at(
                           static_cast<std::size_t>(std::clamp(level, kLzmaFastest, kLzmaBest)));
  const std::size_t most = level <= kLastFastLevel ? ofLevel : kLargestArchiveDictionary;
  tuning.dictionary = std::clamp<std::size_t>(std::bit_ceil(total), kSmallestDictionary, most);
  return tuning;
}

}  // namespace quillory::pack
