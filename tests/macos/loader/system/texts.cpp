// Characters, error texts, and memory by words.
#include <fnmatch.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <cwctype>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/character_kinds.h"
#include "tests/macos/loader/system/numbers.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

/// The table that the macros of <ctype.h> look into.
struct TheirCharacters {
  char magic[8];
  char encoding[32];
  void* get;
  void* put;
  std::int32_t invalid;
  std::uint32_t kinds[256];
  std::int32_t lower[256];
  std::int32_t upper[256];
  struct {
    std::int32_t count;
    void* ranges;
  } extended[3];
  void* variable;
  std::int32_t variableLength;
  std::int32_t classCount;
  void* classes;
};
static_assert(offsetof(TheirCharacters, kinds) == 60);

TheirCharacters asciiTable() {
  TheirCharacters table{};
  std::memcpy(table.magic, "RuneMagA", sizeof table.magic);
  std::memcpy(table.encoding, "NONE", 5);
  for (int c = 0; c < 256; ++c) {
    table.kinds[c] = c < 128 ? kindsOf(static_cast<wint_t>(c)) : 0;
    table.lower[c] = c < 128 ? std::tolower(c) : c;
    table.upper[c] = c < 128 ? std::toupper(c) : c;
  }
  return table;
}

int theirMaskrune(int c, unsigned long kinds) {
  return static_cast<int>(c >= 0 && c < 128 ? kindsOf(static_cast<wint_t>(c)) & kinds : 0);
}

int theirTolower(int c) { return c >= 0 && c < 128 ? std::tolower(c) : c; }

int theirToupper(int c) { return c >= 0 && c < 128 ? std::toupper(c) : c; }

char* theirStrerror(int error) { return std::strerror(ourError(error)); }

int theirStrerrorR(int error, char* buffer, std::size_t size) {
  const char* const text = std::strerror(ourError(error));
  if (std::strlen(text) >= size) return theirError(ERANGE);
  std::strcpy(buffer, text);
  return 0;
}

void theirBzero(void* bytes, std::size_t size) { std::memset(bytes, 0, size); }

void theirMemsetPattern16(void* bytes, const void* pattern, std::size_t size) {
  auto* place = static_cast<char*>(bytes);
  for (; size >= 16; size -= 16, place += 16) std::memcpy(place, pattern, 16);
  std::memcpy(place, pattern, size);
}

int theirFnmatch(const char* pattern, const char* text, int flags) {
  constexpr int kOurs[] = {FNM_NOESCAPE, FNM_PATHNAME, FNM_PERIOD};
  int ours = 0;
  for (int i = 0; i < 3; ++i)
    if ((flags & (1 << i)) != 0) ours |= kOurs[i];
  if ((flags & ~7) != 0) fail("fnmatch: flags", flags);
  return fnmatch(pattern, text, ours);
}

}  // namespace

Symbols textSymbols() {
  static TheirCharacters characters = asciiTable();
  static const Symbol kSymbols[] = {
      {"__DefaultRuneLocale", &characters},
      {"___bzero", code(theirBzero)},
      {"_bzero", code(theirBzero)},
      {"___error", code(theirErrorPlace)},
      {"___maskrune", code(theirMaskrune)},
      {"___tolower", code(theirTolower)},
      {"___toupper", code(theirToupper)},
      {"_fnmatch", code(theirFnmatch)},
      {"_memset_pattern16", code(theirMemsetPattern16)},
      {"_strerror", code(theirStrerror)},
      {"_strerror_r", code(theirStrerrorR)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
