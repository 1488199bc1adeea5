// Opcodes of rebasing and binding: a byte each, half opcode, half immediate number, with numbers in
// LEB128 and texts behind it. Throws LoadError at a cut.
#pragma once
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "tests/macos/loader/load_error.h"

namespace quillory::loader {

class OpcodeReader {
 public:
  explicit OpcodeReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool isAtEnd() const { return bytes_.empty(); }

  /// (opcode, immediate)
  std::pair<std::uint8_t, std::uint8_t> next() {
    const std::uint8_t both = byte();
    return {static_cast<std::uint8_t>(both & 0xF0), static_cast<std::uint8_t>(both & 0x0F)};
  }

  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
      const std::uint8_t part = byte();
      if (shift > 63) throw LoadError("a number among the fixups is too large");
      value |= std::uint64_t{part & 0x7Fu} << shift;
      if ((part & 0x80) == 0) return value;
    }
  }

  std::int64_t signedNumber() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;;) {
      const std::uint8_t part = byte();
      if (shift > 63) throw LoadError("a number among the fixups is too large");
      value |= std::uint64_t{part & 0x7Fu} << shift;
      shift += 7;
      if ((part & 0x80) != 0) continue;
      if ((part & 0x40) != 0 && shift < 64) value |= ~std::uint64_t{0} << shift;
      return static_cast<std::int64_t>(value);
    }
  }

  std::string text() {
    const auto* end = bytes_.empty() ? nullptr : std::memchr(bytes_.data(), 0, bytes_.size());
    if (end == nullptr) throw LoadError("a name among the fixups is cut");
    std::string name(reinterpret_cast<const char*>(bytes_.data()));
    bytes_ = bytes_.subspan(name.size() + 1);
    return name;
  }

 private:
  std::uint8_t byte() {
    if (bytes_.empty()) throw LoadError("the fixups are cut");
    const std::uint8_t value = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return value;
  }

  std::span<const std::uint8_t> bytes_;
};

}  // namespace quillory::loader
