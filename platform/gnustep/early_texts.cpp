#include "platform/gnustep/early_texts.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "support/utf8.h"

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

bool areTextsHidden() { return saved != nullptr; }

void restoreTexts() {
  if (saved == nullptr) return;
  std::memcpy(area.begin, saved, area.size());
  munmap(saved, area.size());
  saved = nullptr;
}

}  // namespace quillory::platform
