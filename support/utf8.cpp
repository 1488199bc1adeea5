#include "support/utf8.h"

#include <cstddef>

namespace quillory {
namespace {

unsigned byteAt(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

// Length of the UTF-8 sequence at the begin of `text`, which is not empty; 0 when there is none.
std::size_t firstSequence(std::string_view text) {
  const unsigned lead = byteAt(text, 0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (text.size() < length) return 0;
  const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byteAt(text, 1) < lowest || byteAt(text, 1) > highest) return 0;
  for (std::size_t i = 2; i < length; ++i)
    if (byteAt(text, i) >> 6 != 2) return 0;
  return length;
}

}  // namespace

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = firstSequence(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace quillory
