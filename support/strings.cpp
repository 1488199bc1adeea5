#include "support/strings.h"

#include <cstddef>
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

int addArgs(char** list, int* count, const char* arg) {
  char* slot = allocZeroed(argsiz);
  std::memcpy(slot, arg, argsiz);
  list[*count] = slot;
  return ++*count;
}

}  // namespace quillory
