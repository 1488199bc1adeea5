#include "launcher/for_embedders.h"

#include <unistd.h>

#include <cstddef>
#include <cstring>

#include "support/log.h"

namespace quillory {

int getPathToExe(char* buf, int size) {
  if (size <= 0) return -1;
  std::memset(buf, 0, static_cast<std::size_t>(size));
  if (readlink("/proc/self/exe", buf, static_cast<std::size_t>(size) - 1) < 0) return -1;
  logMessage("Path to exe is %s\n", buf);
  return 0;
}

}  // namespace quillory
