// The numbers in a jar, least significant byte first.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillory::pack {

inline std::uint32_t at16(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]) |
         static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + 1])) << 8;
}

inline std::uint32_t at32(std::string_view bytes, std::size_t at) {
  return at16(bytes, at) | at16(bytes, at + 2) << 16;
}

inline void put16(std::string& out, std::uint32_t value) {
  out += static_cast<char>(value & 0xFF);
  out += static_cast<char>(value >> 8 & 0xFF);
}

inline void put32(std::string& out, std::uint32_t value) {
  put16(out, value & 0xFFFF);
  put16(out, value >> 16);
}

/// What the parts of a jar begin with, and the bytes of each without its texts.
inline constexpr std::string_view kLocalHeaderMark = "PK\x03\x04";
inline constexpr std::string_view kDirectoryEntryMark = "PK\x01\x02";
inline constexpr std::string_view kDirectoryEndMark = "PK\x05\x06";
inline constexpr std::size_t kLocalHeaderSize = 30;
inline constexpr std::size_t kDirectoryEntrySize = 46;
inline constexpr std::size_t kDirectoryEndSize = 22;
inline constexpr std::size_t kLongestJarComment = 65535;

/// Compression methods.
inline constexpr std::uint32_t kStoredMethod = 0;
inline constexpr std::uint32_t kDeflatedMethod = 8;

/// 1980-01-01 00:00, the earliest time that a jar can hold.
inline constexpr std::uint32_t kEarliestTime = 0;
inline constexpr std::uint32_t kEarliestDate = 0x0021;

}  // namespace quillory::pack
