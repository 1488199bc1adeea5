#include <sys/random.h>

#include <cerrno>

#include "packager/keys/system_random.h"

namespace quillory::pack {

bool fillWithSystemRandom(void* out, std::size_t count) {
  auto* next = static_cast<unsigned char*>(out);
  while (count > 0) {
    const ssize_t got = getrandom(next, count, 0);
    if (got < 0 && errno != EINTR) {
      return false;
    }
    if (got > 0) {
      next += got;
      count -= static_cast<std::size_t>(got);
    }
  }
  return true;
}

}  // namespace quillory::pack
