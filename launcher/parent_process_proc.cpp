// Systems with a /proc file system.
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "launcher/parent_process.h"

namespace quillory {

bool parentRunsThisExecutable() {
  // The files behind the links, not their names: a name may have a new file since.
  struct stat own {
  }, parents{};
  const std::string parent = "/proc/" + std::to_string(getppid()) + "/exe";
  return stat("/proc/self/exe", &own) == 0 && stat(parent.c_str(), &parents) == 0 &&
         own.st_dev == parents.st_dev && own.st_ino == parents.st_ino;
}

}  // namespace quillory
