// Bytes for tests: made by a fixed rule, and shown as hexadecimal.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace quillory::testing {

inline std::string hex(const void* data, std::size_t length) {
  static constexpr char kDigits[] = "0123456789abcdef";
  const unsigned char* bytes = static_cast<const unsigned char*>(data);
  std::string text;
  for (std::size_t i = 0; i < length; ++i) {
    text.push_back(kDigits[bytes[i] >> 4]);
    text.push_back(kDigits[bytes[i] & 15]);
  }
  return text;
}

template <std::size_t N>
std::string hex(const unsigned char (&bytes)[N]) {
  return hex(bytes, N);
}

inline std::string hex(const std::vector<unsigned char>& bytes) {
  return hex(bytes.data(), bytes.size());
}

/// Bytes without a short period (a linear congruential generator), always the same.
inline std::vector<unsigned char> patternBytes(std::size_t length) {
  std::vector<unsigned char> bytes(length);
  unsigned state = 1;
  for (unsigned char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<unsigned char>(state >> 24);
  }
  return bytes;
}

}  // namespace quillory::testing
