#include "tests/macos/loader/compact_unwind.h"

#include <algorithm>
#include <cstring>

#include "tests/macos/loader/load_error.h"

namespace quillory::loader {
namespace {

constexpr std::uint32_t kHasLsda = 0x40000000;

/// The section, read with a look at its end.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint32_t word(std::size_t at) const { return number<std::uint32_t>(at); }
  std::uint16_t half(std::size_t at) const { return number<std::uint16_t>(at); }

 private:
  template <class T>
  T number(std::size_t at) const {
    if (at > bytes_.size() || bytes_.size() - at < sizeof(T))
      throw LoadError("__unwind_info is cut");
    T value;
    std::memcpy(&value, bytes_.data() + at, sizeof value);
    return value;
  }

  std::span<const std::uint8_t> bytes_;
};

struct Header {
  explicit Header(const Reader& reader)
      : commonEncodings(reader.word(4)),
        commonCount(reader.word(8)),
        personalities(reader.word(12)),
        personalityCount(reader.word(16)),
        index(reader.word(20)),
        indexCount(reader.word(24)) {
    if (reader.word(0) != 1) throw LoadError("__unwind_info has an unknown version");
  }

  std::uint32_t commonEncodings;
  std::uint32_t commonCount;
  std::uint32_t personalities;
  std::uint32_t personalityCount;
  std::uint32_t index;
  std::uint32_t indexCount;
};

class Pages {
 public:
  Pages(const Reader& reader, const Header& header) : reader_(reader), header_(header) {}

  std::vector<UnwindRange> all() {
    for (std::uint32_t i = 0; i + 1 < header_.indexCount; ++i) {
      const std::size_t entry = header_.index + std::size_t{12} * i;
      const std::uint32_t page = reader_.word(entry + 4);
      if (page != 0) readPage(page, reader_.word(entry));
      const std::uint32_t next = reader_.word(entry + 12);
      if (!ranges_.empty()) ranges_.back().end = next;
    }
    for (UnwindRange& range : ranges_)
      if (range.end < range.begin) throw LoadError("__unwind_info is not in order");
    return std::move(ranges_);
  }

 private:
  void add(std::uint32_t begin, std::uint32_t encoding) {
    if (!ranges_.empty() && ranges_.back().end == 0) ranges_.back().end = begin;
    ranges_.push_back({begin, 0, encoding});
  }

  void readPage(std::size_t page, std::uint32_t begin) {
    constexpr std::uint32_t kRegular = 2;
    constexpr std::uint32_t kCompressed = 3;
    const std::uint32_t kind = reader_.word(page);
    const std::size_t entries = page + reader_.half(page + 4);
    const std::uint16_t count = reader_.half(page + 6);
    if (kind != kRegular && kind != kCompressed) throw LoadError("an unknown page of unwinding");
    for (std::size_t i = 0; i < count; ++i) {
      if (kind == kRegular) {
        add(reader_.word(entries + 8 * i), reader_.word(entries + 8 * i + 4));
      } else {
        const std::uint32_t both = reader_.word(entries + 4 * i);
        add(begin + (both & 0xFFFFFF), encodingAt(page, both >> 24));
      }
    }
  }

  std::uint32_t encodingAt(std::size_t page, std::uint32_t number) const {
    if (number < header_.commonCount) return reader_.word(header_.commonEncodings + 4 * number);
    number -= header_.commonCount;
    if (number >= reader_.half(page + 10)) throw LoadError("an unwinding that no page has");
    return reader_.word(page + reader_.half(page + 8) + 4 * number);
  }

  const Reader& reader_;
  const Header& header_;
  std::vector<UnwindRange> ranges_;
};

// Pairs of function and table, in the order of the functions.
void addTables(const Reader& reader, const Header& header, std::vector<UnwindRange>& ranges) {
  if (header.indexCount == 0) return;
  const std::uint32_t first = reader.word(header.index + 8);
  const std::uint32_t last =
      reader.word(header.index + std::size_t{12} * (header.indexCount - 1) + 8);
  for (std::size_t at = first; at + 8 <= last; at += 8) {
    const std::uint32_t function = reader.word(at);
    const auto range = std::lower_bound(
        ranges.begin(), ranges.end(), function,
        [](const UnwindRange& one, std::uint32_t begin) { return one.begin < begin; });
    if (range == ranges.end() || range->begin != function)
      throw LoadError("a table of exceptions for no function");
    range->lsda = reader.word(at + 4);
  }
}

void addPersonalities(const Reader& reader, const Header& header,
                      std::vector<UnwindRange>& ranges) {
  for (UnwindRange& range : ranges) {
    const std::uint32_t number = (range.encoding >> 28) & 3;
    if (number > header.personalityCount) throw LoadError("an unknown personality");
    if (number != 0)
      range.personalityPointer = reader.word(header.personalities + std::size_t{4} * (number - 1));
    if ((range.encoding & kHasLsda) == 0)
      range.lsda = 0;
    else if (range.lsda == 0)
      throw LoadError("a function lacks its table of exceptions");
  }
}

// How compact encodings number the registers.
constexpr Register kNumbered[] = {kReturn, kRbx, kR12, kR13, kR14, kR15, kRbp};

// Which of six registers were saved, in which order: a permutation as one number.
std::vector<Register> permuted(std::uint32_t count, std::uint32_t permutation) {
  if (count > 6) throw LoadError("more saved registers than there are");
  bool isUsed[7] = {};
  std::vector<Register> result;
  for (std::uint32_t i = 0; i < count; ++i) {
    // The rest of the digits has one value fewer each.
    std::uint32_t weight = 1;
    for (std::uint32_t j = i + 1; j < std::min(count, 5u); ++j) weight *= 6 - j;
    std::uint32_t digit = i == 5 ? 0 : permutation / weight;
    if (i < 5) permutation -= digit * weight;
    for (std::uint32_t number = 1; number <= 6; ++number) {
      if (isUsed[number] || digit-- != 0) continue;
      isUsed[number] = true;
      result.push_back(kNumbered[number]);
      break;
    }
  }
  if (result.size() != count) throw LoadError("an impossible permutation of registers");
  return result;
}

}  // namespace

std::vector<UnwindRange> unwindRanges(std::span<const std::uint8_t> section) {
  const Reader reader(section);
  const Header header(reader);
  std::vector<UnwindRange> ranges = Pages(reader, header).all();
  addTables(reader, header, ranges);
  addPersonalities(reader, header, ranges);
  return ranges;
}

FrameKind frameKindOf(std::uint32_t encoding) {
  switch ((encoding >> 24) & 0xF) {
    case 0:
      return FrameKind::kNone;
    case 1:
      return FrameKind::kBasePointer;
    case 2:
      return FrameKind::kStackSize;
    case 3:
      return FrameKind::kStackSizeInCode;
    case 4:
      return FrameKind::kDwarf;
  }
  throw LoadError("an unknown kind of frame");
}

Frame basePointerFrame(std::uint32_t encoding) {
  Frame frame{16, {{kRbp, 16}}};
  const auto offset = static_cast<std::int32_t>((encoding >> 16) & 0xFF);
  for (std::int32_t i = 0; i < 5; ++i) {
    const std::uint32_t number = (encoding >> (3 * i)) & 7;
    if (number == 0) continue;
    if (number > 5) throw LoadError("a saved register of an unknown number");
    frame.saved.push_back({kNumbered[number], 16 + 8 * (offset - i)});
  }
  return frame;
}

Frame stackFrame(std::uint32_t encoding, std::optional<std::uint32_t> sizeInCode) {
  Frame frame{};
  frame.size =
      sizeInCode ? *sizeInCode + 8 * ((encoding >> 13) & 7) : 8 * ((encoding >> 16) & 0xFF);
  const std::uint32_t count = (encoding >> 10) & 7;
  std::int32_t below = 8 + 8 * static_cast<std::int32_t>(count);
  for (const Register saved : permuted(count, encoding & 0x3FF)) {
    frame.saved.push_back({saved, below});
    below -= 8;
  }
  return frame;
}

std::uint32_t frameSizeOffset(std::uint32_t encoding) { return (encoding >> 16) & 0xFF; }

}  // namespace quillory::loader
