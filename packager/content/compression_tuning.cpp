#include "packager/content/compression_tuning.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "packager/content/content_cuts.h"

namespace quillory::pack {
namespace {

// Up to this level packing is to be quick: a longer search is not.
constexpr int kLastFastLevel = 5;
// Up to this one half of a level's search is made: a seventh faster for a tenth of a percent.
constexpr int kLastMediumLevel = 7;
constexpr int kMediumDepth = 24;
constexpr std::size_t kSmallestDictionary = std::size_t{64} << 10;
// Of the levels, as the xz tools have them.
constexpr std::array kDictionaryBits = {18, 20, 21, 22, 22, 23, 23, 24, 25, 26};

std::uint64_t longestPiece(const std::vector<LzmaCut>& cuts, std::uint64_t total) {
  std::uint64_t longest = cuts.empty() ? total : cuts.front().start;
  for (std::size_t i = 0; i < cuts.size(); ++i) {
    const std::uint64_t end = i + 1 < cuts.size() ? cuts[i + 1].start : total;
    longest = std::max(longest, end - cuts[i].start + cuts[i].known);
  }
  return longest;
}

}  // namespace

LzmaTuning tuningFor(const ContentTree& content, int level, const std::vector<LzmaCut>& cuts) {
  std::uint64_t total = 0;
  std::uint64_t programs = 0;
  for (const auto& [path, entry] : content.entries()) {
    total += archivedBytes(path, entry);
    programs += isProgram(entry) ? entry.size : 0;
  }
  LzmaTuning tuning;
  if (programs * 2 < total) {
    tuning.literalContextBits = 4;
    tuning.positionBits = programs * 8 < total ? 0 : 1;
  }
  if (level > kLastFastLevel && level <= kLastMediumLevel) tuning.searchDepth = kMediumDepth;
  const auto ofLevel = std::size_t{1} << kDictionaryBits.at(
                           static_cast<std::size_t>(std::clamp(level, kLzmaFastest, kLzmaBest)));
  const std::size_t most = level <= kLastFastLevel ? ofLevel : kLargestArchiveDictionary;
  tuning.dictionary =
      std::clamp<std::size_t>(std::bit_ceil(longestPiece(cuts, total)), kSmallestDictionary, most);
  return tuning;
}

LzmaTuning tuningFor(const ContentTree& content, int level) {
  return tuningFor(content, level, cutsFor(content));
}

}  // namespace quillory::pack
