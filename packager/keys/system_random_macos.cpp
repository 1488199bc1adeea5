// First: sys/random.h does not stand alone.
#include <Availability.h>
#include <sys/types.h>
//
#include <sys/random.h>

#include <algorithm>

#include "packager/keys/system_random.h"

namespace quillory::pack {
namespace {

// More it does not give at once.
constexpr std::size_t kMostAtOnce = 256;

}  // namespace

bool fillWithSystemRandom(void* out, std::size_t count) {
  auto* next = static_cast<unsigned char*>(out);
  while (count > 0) {
    const std::size_t part = std::min(count, kMostAtOnce);
    if (getentropy(next, part) != 0) {
      return false;
    }
    next += part;
    count -= part;
  }
  return true;
}

}  // namespace quillory::pack
