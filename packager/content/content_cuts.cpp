#include "packager/content/content_cuts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <string_view>
#include <utility>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

constexpr std::uint64_t kMega = std::uint64_t{1} << 20;
constexpr std::uint64_t kSmallestPiece = 8 * kMega;
constexpr std::uint64_t kLargestPiece = 36 * kMega;
constexpr std::uint64_t kLargeFile = 16 * kMega;
// Looking all of it up once takes half as long as compressing it.
constexpr std::size_t kKnownInside = 12 * kMega;
constexpr std::size_t kKnownBetween = 4 * kMega;
// Of what is further back, a program has next to nothing: a sixth of the time for a thousandth.
constexpr std::size_t kReachOfPrograms = 8 * kMega;

// Of pieces that the content cuts: a change makes one anew or two.
constexpr std::uint64_t kPieces = 3;
constexpr std::uint64_t kSmallestAverage = 2 * kMega;
constexpr std::uint64_t kLargestAverage = 8 * kMega;
constexpr std::uint64_t kLastPiece = std::uint64_t{16} << 10;
constexpr std::size_t kKnownAtLast = kMega;

constexpr std::size_t kSmallestProgram = 4096;
constexpr std::array<std::string_view, 3> kProgramStarts = {
    "\x7f"
    "ELF",
    "\xcf\xfa\xed\xfe", "\xca\xfe\xba\xbe"};
constexpr std::string_view kZipStart = "PK\x03\x04";

std::string startOf(const ContentEntry& entry) {
  return entry.kind == ContentEntry::Kind::kFile ? readBeginningOf(entry.source, 4)
                                                 : entry.bytes.substr(0, 4);
}

bool isLarge(const ContentEntry& entry) {
  return entry.size >= kLargeFile && startOf(entry) != kZipStart;
}

// Collects where pieces may begin, and takes what does not make them small.
class LargeFileCutter {
 public:
  void mayCutAt(std::uint64_t place, std::size_t known, std::size_t reach = 0) {
    place = place / kCutAlignment * kCutAlignment;
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

std::vector<LzmaCut> cutsAtLargeFiles(const ContentTree& content, std::uint64_t at) {
  LargeFileCutter cutter;
  for (const auto& [path, entry] : content.entries()) {
    const std::uint64_t size = archivedBytes(path, entry);
    if (entry.size >= kLargeFile) {
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

// A number for each byte that has nothing to do with it.
constexpr std::array<std::uint64_t, 256> scatteredNumbers() {
  std::array<std::uint64_t, 256> numbers{};
  std::uint64_t state = 0;
  for (std::uint64_t& number : numbers) {
    state += 0x9E3779B97F4A7C15;
    number = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EB;
    number ^= number >> 31;
  }
  return numbers;
}

// Cuts where a digest of the last 64 bytes begins with so many zeros that it does so once in
// `average` bytes, half of that after the last cut at the earliest and twice of it at the latest.
class ContentCutter : public ByteSink {
 public:
  ContentCutter(std::uint64_t at, std::uint64_t average)
      : at_(at), average_(average), shift_(64 - std::countr_zero(average)) {}

  void write(std::string_view bytes) override {
    static constexpr auto kNumbers = scatteredNumbers();
    for (const char byte : bytes) {
      digest_ = (digest_ << 1) + kNumbers[static_cast<unsigned char>(byte)];
      ++at_;
      const std::uint64_t length = at_ - last_;
      if (length >= average_ * 2 || (length >= average_ / 2 && digest_ >> shift_ == 0)) {
        cut(std::min<std::uint64_t>(kKnownBetween, at_ - file_));
      }
    }
  }
  // What is between the files.
  void pass(std::uint64_t bytes) { at_ += bytes; }
  // Of a large file no piece knows what is before it: its length, which changes with any byte.
  void beginLargeFile() {
    if (at_ > last_) cut(0);
    file_ = at_;
  }

  std::vector<LzmaCut> cuts() {
    while (!cuts_.empty() && cuts_.back().start + 2 * kLastPiece > at_) cuts_.pop_back();
    cuts_.push_back({at_ - kLastPiece, kKnownAtLast});
    return std::move(cuts_);
  }

 private:
  void cut(std::size_t known) {
    cuts_.push_back({at_, known});
    last_ = at_;
  }

  std::uint64_t at_;
  std::uint64_t file_ = 0;
  std::uint64_t average_;
  int shift_;
  std::uint64_t last_ = 0;
  std::uint64_t digest_ = 0;
  std::vector<LzmaCut> cuts_;
};

std::vector<LzmaCut> cutsByContent(const ContentTree& content, std::uint64_t before,
                                   std::uint64_t total) {
  const std::uint64_t average =
      std::clamp(std::bit_floor(total / kPieces), kSmallestAverage, kLargestAverage);
  if (total < 2 * average) {
    return {};
  }
  ContentCutter cutter(before, average);
  for (const auto& [path, entry] : content.entries()) {
    const std::uint64_t size = archivedBytes(path, entry);
    cutter.pass(size - std::min(size, entry.size));
    if (entry.size >= average) {
      cutter.beginLargeFile();
    }
    if (entry.kind == ContentEntry::Kind::kFile && entry.size > 0) {
      copyFileInto(cutter, entry.source);
    } else {
      cutter.write(entry.bytes);
    }
  }
  return cutter.cuts();
}

}  // namespace

bool isProgram(const ContentEntry& entry) {
  return entry.kind == ContentEntry::Kind::kFile && entry.size >= kSmallestProgram &&
         std::find(kProgramStarts.begin(), kProgramStarts.end(), startOf(entry)) !=
             kProgramStarts.end();
}

std::uint64_t archivedBytes(const std::string& path, const ContentEntry& entry) {
  constexpr std::uint64_t kTypeRecord = 2;
  const std::uint64_t header = kTypeRecord + path.size() + 1;
  if (entry.kind == ContentEntry::Kind::kFolder) {
    return header;
  }
  return entry.size == 0 ? 0 : header + std::to_string(entry.size).size() + 1 + entry.size;
}

std::vector<LzmaCut> cutsFor(const ContentTree& content, std::uint64_t before) {
  bool hasLarge = false;
  std::uint64_t total = before;
  for (const auto& [path, entry] : content.entries()) {
    hasLarge = hasLarge || isLarge(entry);
    total += archivedBytes(path, entry);
  }
  return hasLarge ? cutsAtLargeFiles(content, before) : cutsByContent(content, before, total);
}

}  // namespace quillory::pack
