#include "java/modified_utf8.h"

#include <cstddef>
#include <cstdint>

namespace quillory {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstBeyondUtf16Unit = 0x10000;
constexpr char32_t kHighSurrogate = 0xD800;
constexpr char32_t kLowSurrogate = 0xDC00;

/// What a lead byte says about its sequence: the length (0: not a lead byte) and what the second
/// byte may be. These bounds are what keeps out overlong forms, surrogates and values above
/// U+10FFFF.
struct Lead {
  int length = 0;
  std::uint8_t lowest = 0x80;
  std::uint8_t highest = 0xBF;
};

Lead leadOf(std::uint8_t byte) {
  if (byte < 0x80) return {1};
  if (byte < 0xC2) return {0};
  if (byte < 0xE0) return {2};
  if (byte == 0xE0) return {3, 0xA0};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte < 0xF0) return {3};
  if (byte == 0xF0) return {4, 0x90};
  if (byte < 0xF4) return {4};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0};
}

struct Decoded {
  char32_t character;
  std::size_t length;
};

/// The character at the beginning of `bytes`, which is not empty.
Decoded decodeFirst(std::string_view bytes) {
  const auto first = static_cast<std::uint8_t>(bytes[0]);
  const Lead lead = leadOf(first);
  if (lead.length == 0) return {kReplacement, 1};
  if (lead.length == 1) return {first, 1};
  char32_t character = first & (0x7FU >> lead.length);
  for (std::size_t i = 1; i < static_cast<std::size_t>(lead.length); ++i) {
    const std::uint8_t next = i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : 0;
    const bool isAllowed = i == 1 ? next >= lead.lowest && next <= lead.highest : next >> 6 == 2;
    if (!isAllowed) return {kReplacement, i};
    character = character << 6 | (next & 0x3FU);
  }
  return {character, static_cast<std::size_t>(lead.length)};
}

void appendThreeBytes(char32_t unit, std::string& text) {
  text.push_back(static_cast<char>(0xE0U | unit >> 12));
  text.push_back(static_cast<char>(0x80U | (unit >> 6 & 0x3FU)));
  text.push_back(static_cast<char>(0x80U | (unit & 0x3FU)));
}

}  // namespace

std::string toModifiedUtf8(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const auto [character, length] = decodeFirst(bytes);
    if (character >= kFirstBeyondUtf16Unit) {
      const char32_t offset = character - kFirstBeyondUtf16Unit;
      appendThreeBytes(kHighSurrogate | offset >> 10, text);
      appendThreeBytes(kLowSurrogate | (offset & 0x3FFU), text);
    } else if (character == kReplacement) {
      appendThreeBytes(kReplacement, text);
    } else {
      text.append(bytes.substr(0, length));
    }
    bytes.remove_prefix(length);
  }
  return text;
}

}  // namespace quillory
