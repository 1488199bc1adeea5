#include <cstdlib>

#include "packager/content/pack_cache.h"

namespace quillory::pack {

std::string userCacheFolder() {
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? home + std::string("/Library/Caches") : "";
}

}  // namespace quillory::pack
