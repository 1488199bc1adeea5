#include "formats/record_stream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "support/owned.h"

namespace quillory {
namespace {

long readDecimal(std::FILE* stream, const char* name) {
  return std::atol(readText(stream, name, kNumberCapacity).c_str());
}

}  // namespace

std::string readText(std::FILE* stream, const char* /*name*/, int capacity) {
  std::string value;
  if (capacity < 2) return value;  // Room for the terminator only.
  const std::size_t limit = static_cast<std::size_t>(capacity) - 1;

  // Byte by byte without a lock: a value may hold line breaks, and what follows it must stay
  // unread.
  for (int byte = getc_unlocked(stream); byte != EOF && byte != 0; byte = getc_unlocked(stream)) {
    value.push_back(static_cast<char>(byte));
    if (value.size() < limit) continue;
    // The rest stays unread on purpose, the terminator too: writers keep values below the limit,
    // and a reader that skipped ahead would hide that one did not.
    std::printf("***WARNING - STRING TOO LONG FOR ALLOC %d>%d! (READSTRING) [%s]\n", capacity - 1,
                capacity, value.c_str());
    break;
  }
  return value;
}

char* readString(std::FILE* stream, const char* name, int capacity) {
  const std::string value = readText(stream, name, capacity);
  const auto size = static_cast<std::size_t>(std::max(capacity, 1));
  OwnedText block(static_cast<char*>(std::calloc(size, 1)));
  if (block) std::memcpy(block.get(), value.data(), value.size());
  return block.release();
}

char* readString(std::FILE* stream, const char* name) {
  return readString(stream, name, kDefaultCapacity);
}

int readInt(std::FILE* stream, const char* name) {
  return static_cast<int>(readDecimal(stream, name));
}

long readLong(std::FILE* stream, const char* name) { return readDecimal(stream, name); }

bool readBoolean(std::FILE* stream, const char* name) { return readDecimal(stream, name) == 1; }

bool isAtEnd(std::FILE* stream) {
  const int byte = std::getc(stream);
  if (byte == EOF) return true;
  std::ungetc(byte, stream);
  return false;
}

}  // namespace quillory
