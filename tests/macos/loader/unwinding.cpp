#include "tests/macos/loader/unwinding.h"

#include <cstring>
#include <map>
#include <string_view>

#include "tests/macos/loader/compact_unwind.h"
#include "tests/macos/loader/dwarf_frames.h"

// Of libgcc: from now on the unwinder looks into these descriptions, too; a length of 0 ends them.
extern "C" void __register_frame(void* table);

namespace quillory::loader {
namespace {

/// Descriptions of frames in DWARF, one behind the other.
class FrameWriter {
 public:
  // Common part of those with the same personality. Pointers are absolute.
  std::size_t common(std::uint64_t personality) {
    const std::size_t begin = beginEntry(0);
    byte(1);
    for (const char c : std::string_view(personality == 0 ? "zR" : "zPLR"))
      byte(static_cast<std::uint8_t>(c));
    byte(0);
    byte(1);     // unit of code
    byte(0x78);  // unit of data: -8
    byte(kReturn);
    byte(personality == 0 ? 1 : 11);
    if (personality != 0) {
      byte(0);
      word(personality);
      byte(0);
    }
    byte(0);
    frameFrom(kRsp, 8);
    savedBelow(kReturn, 8);
    endEntry(begin);
    return begin;
  }

  void beginFunction(std::size_t common, std::uint64_t begin, std::uint64_t size,
                     std::optional<std::uint64_t> lsda) {
    function_ = beginEntry(static_cast<std::uint32_t>(bytes_.size() + 4 - common));
    word(begin);
    word(size);
    byte(lsda ? 8 : 0);
    if (lsda) word(*lsda);
  }
  void frameFrom(std::uint8_t base, std::uint32_t size) {
    byte(0x0C);
    byte(base);
    number(size);
  }
  void savedBelow(std::uint8_t which, std::int32_t below) {
    byte(static_cast<std::uint8_t>(0x80 | which));
    number(static_cast<std::uint32_t>(below) / 8);
  }
  void instructions(std::span<const std::uint8_t> ready) { raw(ready.data(), ready.size()); }
  void endFunction() { endEntry(function_); }

  std::vector<std::uint8_t> ended() const {
    std::vector<std::uint8_t> all = bytes_;
    all.insert(all.end(), 4, 0);
    return all;
  }

 private:
  std::size_t beginEntry(std::uint32_t backToCommon) {
    const std::size_t begin = bytes_.size();
    half(0);
    half(backToCommon);
    return begin;
  }
  void endEntry(std::size_t begin) {
    while (bytes_.size() % 8 != 4) byte(0);
    const auto size = static_cast<std::uint32_t>(bytes_.size() - begin - 4);
    std::memcpy(bytes_.data() + begin, &size, sizeof size);
  }
  void byte(std::uint8_t value) { bytes_.push_back(value); }
  void number(std::uint32_t value) {
    for (; value > 0x7F; value >>= 7) byte(static_cast<std::uint8_t>(value | 0x80));
    byte(static_cast<std::uint8_t>(value));
  }
  void half(std::uint32_t value) { raw(&value, sizeof value); }
  void word(std::uint64_t value) { raw(&value, sizeof value); }
  void raw(const void* value, std::size_t size) {
    const auto* first = static_cast<const std::uint8_t*>(value);
    bytes_.insert(bytes_.end(), first, first + size);
  }

  std::vector<std::uint8_t> bytes_;
  std::size_t function_ = 0;
};

class Registration {
 public:
  explicit Registration(const Image& image)
      : image_(image), base_(reinterpret_cast<std::uint64_t>(image.header())) {}

  void add(const UnwindRange& range) {
    const FrameKind kind = frameKindOf(range.encoding);
    if (kind == FrameKind::kNone || kind == FrameKind::kDwarf || range.begin == range.end) return;
    const std::uint64_t begin = address(range.begin, range.end - range.begin);
    writer_.beginFunction(commonFor(personalityOf(range)), begin, range.end - range.begin,
                          lsdaOf(range));
    if (kind == FrameKind::kBasePointer) {
      write(kRbp, basePointerFrame(range.encoding));
    } else {
      std::optional<std::uint32_t> size;
      if (kind == FrameKind::kStackSizeInCode)
        size = numberAt(range.begin + frameSizeOffset(range.encoding));
      write(kRsp, stackFrame(range.encoding, size));
    }
    writer_.endFunction();
  }

  // What is common comes with each: the rules that the compiler writes there never differ.
  void add(const DwarfFunction& function) {
    std::optional<std::uint64_t> lsda;
    if (function.personality != 0) lsda = function.lsda;
    writer_.beginFunction(commonFor(function.personality), function.begin, function.size, lsda);
    writer_.instructions(function.commonInstructions);
    writer_.instructions(function.instructions);
    writer_.endFunction();
  }

  std::vector<std::uint8_t> table() const { return writer_.ended(); }

 private:
  std::uint64_t address(std::uint32_t offset, std::size_t size) const {
    const std::uint64_t linked = base_ - static_cast<std::uint64_t>(image_.slide()) + offset;
    return reinterpret_cast<std::uint64_t>(image_.at(linked, size));
  }

  std::uint32_t numberAt(std::uint32_t offset) const {
    std::uint32_t value;
    std::memcpy(&value, reinterpret_cast<const void*>(address(offset, sizeof value)), sizeof value);
    return value;
  }

  // With a personality every function needs a table, be it none.
  std::optional<std::uint64_t> lsdaOf(const UnwindRange& range) const {
    if (range.lsda != 0) return address(range.lsda, 1);
    if (range.personalityPointer != 0) return 0;
    return std::nullopt;
  }

  std::uint64_t personalityOf(const UnwindRange& range) const {
    std::uint64_t personality = 0;
    if (range.personalityPointer != 0)
      std::memcpy(&personality, reinterpret_cast<const void*>(address(range.personalityPointer, 8)),
                  8);
    return personality;
  }

  std::size_t commonFor(std::uint64_t personality) {
    const auto [found, isNew] = commons_.try_emplace(personality, 0);
    if (isNew) found->second = writer_.common(personality);
    return found->second;
  }

  void write(Register base, const Frame& frame) {
    writer_.frameFrom(base, frame.size);
    for (const auto& [which, below] : frame.saved) writer_.savedBelow(which, below);
  }

  const Image& image_;
  std::uint64_t base_;
  FrameWriter writer_;
  std::map<std::uint64_t, std::size_t> commons_;
};

}  // namespace

void registerUnwinding(const Image& image) {
  Registration all(image);
  const auto compact = image.section("__TEXT", "__unwind_info");
  if (!compact.empty())
    for (const UnwindRange& range : unwindRanges(compact)) all.add(range);
  for (const DwarfFunction& function : dwarfFunctions(image.section("__TEXT", "__eh_frame")))
    all.add(function);
  // Stays for good.
  __register_frame((new std::vector<std::uint8_t>(all.table()))->data());
}

}  // namespace quillory::loader
