// What kinds a character is of, as bits of Darwin's <ctype.h>.
#pragma once
#include <cstdint>
#include <cwctype>

namespace quillory::loader {

/// By the rules of the calling thread's locale; a digit's value is in the lowest bits.
inline std::uint32_t kindsOf(wint_t c) {
  std::uint32_t kinds = 0;
  if (std::iswalpha(c) != 0) kinds |= 0x100;
  if (std::iswcntrl(c) != 0) kinds |= 0x200;
  if (std::iswdigit(c) != 0) kinds |= 0x400;
  if (std::iswgraph(c) != 0) kinds |= 0x800;
  if (std::iswlower(c) != 0) kinds |= 0x1000;
  if (std::iswpunct(c) != 0) kinds |= 0x2000;
  if (std::iswspace(c) != 0) kinds |= 0x4000;
  if (std::iswupper(c) != 0) kinds |= 0x8000;
  if (std::iswxdigit(c) != 0) kinds |= 0x10000;
  if (std::iswblank(c) != 0) kinds |= 0x20000;
  if (std::iswprint(c) != 0) kinds |= 0x40000;
  if (c >= L'0' && c <= L'9') kinds |= c - L'0';
  if (c >= L'a' && c <= L'f') kinds |= 10 + c - L'a';
  if (c >= L'A' && c <= L'F') kinds |= 10 + c - L'A';
  return kinds;
}

}  // namespace quillory::loader
