#include "platform/gnustep/utf8.h"

#include <cstddef>

namespace quillory::platform {
namespace {

unsigned byteAt(const char* text) { return static_cast<unsigned char>(*text); }

// Length of the UTF-8 sequence at `text`, 0 when there is none. A text ends with a zero byte, which
// continues no sequence.
std::size_t sequenceAt(const char* text) {
  const unsigned lead = byteAt(text);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byteAt(text + 1) < lowest || byteAt(text + 1) > highest) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  for (std::size_t i = 2; i < length; ++i)
    if (byteAt(text + i) >> 6 != 2) return 0;
  return length;
}

}  // namespace

bool isUtf8(const char* text) {
  while (*text != '\0') {
    const std::size_t length = sequenceAt(text);
    if (length == 0) return false;
    text += length;
  }
  return true;
}

}  // namespace quillory::platform
