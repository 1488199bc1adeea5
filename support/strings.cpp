#include "support/strings.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quillory {
namespace {

// Zero-filled. Out of memory ends the process here, so that callers need not check for it.
char* allocZeroed(std::size_t size) {
  char* block = static_cast<char*>(std::calloc(size, 1));
  if (block == nullptr) std::abort();
  return block;
}

}  // namespace

std::uint32_t argsiz = 1024;

char* allocCopy(const char* s) {
  const std::size_t size = std::strlen(s) + 1;
  char* copy = allocZeroed(size);
  std::memcpy(copy, s, size);
  return copy;
}

char* cloneString(const char* s) { return allocCopy(s); }

char* allocSubstring(const char* s, int start, int length) {
  const std::size_t available = std::strlen(s);
  const std::size_t from = std::min(static_cast<std::size_t>(std::max(start, 0)), available);
  const std::size_t wanted = static_cast<std::size_t>(std::max(length, 0));
  const std::size_t count = std::min(wanted, available - from);
  char* cut = allocZeroed(count + 1);
  std::memcpy(cut, s + from, count);
  return cut;
}

char* allocTempString(const char* a, const char* b) {
  const std::size_t lengthOfA = std::strlen(a);
  const std::size_t lengthOfB = std::strlen(b);
  char* both = allocZeroed(lengthOfA + lengthOfB + 1);
  std::memcpy(both, a, lengthOfA);
  std::memcpy(both + lengthOfA, b, lengthOfB);
  return both;
}

char* allocTempPath(char* a, char* b) {
  const std::size_t lengthOfA = std::strlen(a);
  const std::size_t lengthOfB = std::strlen(b);
  char* path = allocZeroed(lengthOfA + lengthOfB + 2);
  std::memcpy(path, a, lengthOfA);
  char* end = path + lengthOfA;
  if (lengthOfA > 0 && end[-1] != '/') *end++ = '/';
  std::memcpy(end, b, lengthOfB);
  return path;
}

int lastIndexOf(const char* s, char c) {
  int found = -1;
  for (int i = 0; s[i] != '\0'; ++i) {
    if (s[i] == c) found = i;
  }
  return found;
}

int indexOf(const char* s, char c, int n) {
  int seen = 0;
  for (int i = 0; s[i] != '\0'; ++i) {
    if (s[i] == c && ++seen == n) return i;
  }
  return -1;
}

int integerToA(int value, char* dst) {
  constexpr std::size_t kNumberSize = 8;
  return std::snprintf(dst, kNumberSize, "%d", value);
}

int addArgs(char** list, int* count, const char* arg) {
  char* slot = allocZeroed(argsiz);
  std::memcpy(slot, arg, argsiz);
  list[*count] = slot;
  return ++*count;
}

bool is32Bit() { return false; }

void editToWindowsSubsystem(const char* /*path*/, int /*flag*/) {}

}  // namespace quillory
