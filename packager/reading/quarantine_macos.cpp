#include <sys/xattr.h>

#include "packager/reading/quarantine.h"

namespace quillory::pack {

bool isQuarantined(const std::string& path) {
  return getxattr(path.c_str(), "com.apple.quarantine", nullptr, 0, 0, XATTR_NOFOLLOW) >= 0;
}

}  // namespace quillory::pack
