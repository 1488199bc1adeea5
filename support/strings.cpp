#include "support/strings.h"

#include <cstddef>
#include <cstring>

#include "support/owned.h"

namespace quillory {
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
