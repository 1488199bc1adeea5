#include "packager/content/compression_tuning.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

// Up to this level packing is to be quick: a longer search is not.
constexpr int kLastFastLevel = 5;
// Up to this one half of a level's search is made: a seventh faster for a tenth of a percent.
constexpr int kLastMediumLevel = 7;
constexpr int kMediumDepth = 24;
constexpr std::size_t kSmallestDictionary = std::size_t{64} << 10;
constexpr std::uint64_t kSmallestPiece = std::uint64_t{8} << 20;
constexpr std::uint64_t kLargestPiece = std::uint64_t{36} << 20;
constexpr std::uint64_t kLargeFile = std::uint64_t{16} << 20;
// Looking all of it up once takes half as long as compressing it.
constexpr std::size_t kKnownInside = std::size_t{12} << 20;
// Of what is further back, a program has next to nothing: a sixth of the time for a thousandth.
constexpr std::size_t kReachOfPrograms = std::size_t{8} << 20;
constexpr std::size_t kKnownBetween = std::size_t{4} << 20;
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

// In an archive, with the records around it.
std::uint64_t bytesOf(const std::string& path, const ContentEntry& entry) {
  return entry.size + path.size() + 16;
}

// Collects where pieces may begin, and takes what makes them neither small nor unaligned.
class Cutter {
 public:
  void mayCutAt(std::uint64_t place, std::size_t known, std::size_t reach = 0) {
    place = place / 16 * 16;
    if (place - last() >= kSmallestPiece) {
      cuts_.push_back({place, known, reach});
    } else if (reach != 0 && !cuts_.empty()) {
      cuts_.back().reach = reach;  // of what comes, which is most of the piece
    }
  }
  std::uint64_t last() const { return cuts_.empty() ? 0 : cuts_.back().start; }
  std::vector<LzmaCut> cutsBefore(std::uint64_t end) {
    if (!cuts_.empty() && end - last() < kSmallestPiece) cuts_.pop_back();
    return std::move(cuts_);
  }

 private:
  std::vector<LzmaCut> cuts_;
};

std::uint64_t longestPiece(const std::vector<LzmaCut>& cuts, std::uint64_t total) {
  std::uint64_t longest = cuts.empty() ? total : cuts.front().start;
  for (std::size_t i = 0; i < cuts.size(); ++i) {
    const std::uint64_t end = i + 1 < cuts.size() ? cuts[i + 1].start : total;
    longest = std::max(longest, end - cuts[i].start + cuts[i].known);
  }
  return longest;
}

}  // namespace

std::vector<LzmaCut> cutsFor(const ContentTree& content) {
  Cutter cutter;
  std::uint64_t at = 0;
  for (const auto& [path, entry] : content.entries()) {
    const std::uint64_t size = bytesOf(path, entry);
    if (size >= kLargeFile) {
      const std::uint64_t parts = (size + kLargestPiece - 1) / kLargestPiece;
      for (std::uint64_t part = 0; part <= parts; ++part) {
        const bool isInside = part > 0 && part < parts;
        cutter.mayCutAt(at + size * part / parts, isInside ? kKnownInside : 0,
                        isProgram(entry) && part < parts ? kReachOfPrograms : 0);
      }
    } else if (at + size - cutter.last() > kLargestPiece) {
      cutter.mayCutAt(at, kKnownBetween);
    }
    at += size;
  }
  return cutter.cutsBefore(at);
}

LzmaTuning tuningFor(const ContentTree& content, int level) {
  std::uint64_t total = 0;
  std::uint64_t programs = 0;
  for (const auto& [path, entry] : content.entries()) {
    total += bytesOf(path, entry);
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
  tuning.dictionary = std::clamp<std::size_t>(std::bit_ceil(longestPiece(cutsFor(content), total)),
                                              kSmallestDictionary, most);
  return tuning;
}

}  // namespace quillory::pack
