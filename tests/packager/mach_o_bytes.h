// The headers of programs for macOS, written by hand. Nothing can run them.
#pragma once
#include <cstdint>
#include <initializer_list>
#include <string>

namespace quillory::testing {

inline constexpr std::uint32_t kX86 = 0x01000007;
inline constexpr std::uint32_t kArm = 0x0100000C;

inline std::string littleEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>(value >> shift & 0xFF);
  }
  return bytes;
}

inline std::string bigEndian(std::uint32_t value) {
  const std::string bytes = littleEndian(value);
  return {bytes.rbegin(), bytes.rend()};
}

/// The header of an executable without load commands: magic, processor, its variant, kind, two
/// counts, flags, a word of padding; then `code`.
inline std::string thinMachO(std::uint32_t processor, const std::string& code = "code") {
  return littleEndian(0xFEEDFACF) + littleEndian(processor) + littleEndian(3) + littleEndian(2) +
         std::string(16, '\0') + code;
}

/// A universal file: magic and count, then for each part processor, its variant, place, length and
/// alignment; then the parts.
inline std::string universalMachO(std::initializer_list<std::uint32_t> processors) {
  std::string header =
      bigEndian(0xCAFEBABE) + bigEndian(static_cast<std::uint32_t>(processors.size()));
  std::string parts;
  for (const std::uint32_t processor : processors) {
    const std::string part = thinMachO(processor);
    header += bigEndian(processor) + bigEndian(3) +
              bigEndian(static_cast<std::uint32_t>(8 + 20 * processors.size() + parts.size())) +
              bigEndian(static_cast<std::uint32_t>(part.size())) + bigEndian(0);
    parts += part;
  }
  return header + parts;
}

}  // namespace quillory::testing
