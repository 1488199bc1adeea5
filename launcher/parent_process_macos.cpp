#include <libproc.h>
#include <unistd.h>

#include <cstring>

#include "launcher/parent_process.h"

namespace quillory {

bool parentRunsThisExecutable() {
  char own[PROC_PIDPATHINFO_MAXSIZE] = "";
  char parents[PROC_PIDPATHINFO_MAXSIZE] = "";
  return proc_pidpath(getpid(), own, sizeof own) > 0 &&
         proc_pidpath(getppid(), parents, sizeof parents) > 0 && std::strcmp(own, parents) == 0;
}

}  // namespace quillory
