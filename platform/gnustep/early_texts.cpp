#include "platform/gnustep/early_texts.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace quillory::platform {
namespace {

// The texts stand side by side: the arguments, and behind them the environment.
struct Area {
  char* begin = nullptr;
  char* end = nullptr;
  std::size_t size() const { return static_cast<std::size_t>(end - begin); }
};

Area area;
void* saved = nullptr;

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

bool isUtf8(const char* text) {
  while (*text != '\0') {
    const std::size_t length = sequenceAt(text);
    if (length == 0) return false;
    text += length;
  }
  return true;
}

template <typename Action>
void forEachText(char** arguments, char** environment, Action action) {
  for (char** list : {arguments, environment})
    for (; list != nullptr && *list != nullptr; ++list) action(*list);
}

void hideBytes(char* text) {
  for (; *text != '\0'; ++text)
    if (byteAt(text) >= 0x80) *text = '?';
}

// Runs before the first function of any library: memory comes from the system directly.
void hideTexts(int /*count*/, char** arguments, char** environment) {
  bool isNeeded = false;
  forEachText(arguments, environment, [&](char* text) {
    area.begin = area.begin == nullptr ? text : std::min(area.begin, text);
    area.end = std::max(area.end, text + std::strlen(text) + 1);
    isNeeded = isNeeded || !isUtf8(text);
  });
  if (!isNeeded) return;
  void* const memory =
      mmap(nullptr, area.size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return;
  std::memcpy(memory, area.begin, area.size());
  saved = memory;
  forEachText(arguments, environment, [](char* text) {
    if (!isUtf8(text)) hideBytes(text);
  });
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const hideTextsFirst)(int, char**,
                                                                           char**) = hideTexts;

}  // namespace

void restoreTexts() {
  if (saved == nullptr) return;
  std::memcpy(area.begin, saved, area.size());
  munmap(saved, area.size());
  saved = nullptr;
}

}  // namespace quillory::platform
