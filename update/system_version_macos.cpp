#include <sys/sysctl.h>

#include "update/system_version.h"

namespace quillory::update {

std::string systemVersion() {
  char version[64] = "";
  std::size_t size = sizeof version - 1;
  if (sysctlbyname("kern.osproductversion", version, &size, nullptr, 0) != 0) return "";
  return version;
}

}  // namespace quillory::update
