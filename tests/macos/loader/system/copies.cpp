// copyfile(), as far as std::filesystem calls it: the data of one open file into another.
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <vector>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

struct CopyState {};

CopyState* theirStateAlloc() { return new CopyState; }

int theirStateFree(CopyState* state) {
  delete state;
  return 0;
}

bool writeAll(int file, const std::uint8_t* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(file, bytes, size);
    if (written < 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

int theirFcopyfile(int from, int to, CopyState*, std::uint32_t flags) {
  constexpr std::uint32_t kData = 1 << 3;
  if (flags != kData) fail("fcopyfile: flags", flags);
  std::vector<std::uint8_t> buffer(1 << 16);
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count == 0) return 0;
    if (count < 0 || !writeAll(to, buffer.data(), static_cast<std::size_t>(count))) return -1;
  }
}

}  // namespace

Symbols copySymbols() {
  static const Symbol kSymbols[] = {
      {"_copyfile_state_alloc", code(theirStateAlloc)},
      {"_copyfile_state_free", code(theirStateFree)},
      {"_fcopyfile", code(theirFcopyfile)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
