#include <cstdlib>

#include "packager/content/pack_cache.h"

namespace quillory::pack {

std::string userCacheFolder() {
  const char* caches = std::getenv("XDG_CACHE_HOME");
  // A relative one is to be passed over, says who invented the variable.
  if (caches != nullptr && caches[0] == '/') {
    return caches;
  }
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? home + std::string("/.cache") : "";
}

}  // namespace quillory::pack
