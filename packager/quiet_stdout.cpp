#include "packager/quiet_stdout.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "support/log.h"

namespace quillory::pack {

QuietStdout::QuietStdout(bool shown) : savedSystemLog_(logCalls.systemLog) {
  std::fflush(stdout);
  saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  const int target =
      shown ? fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3) : open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(target, STDOUT_FILENO);
  close(target);
  // Every message goes there too: one copy is enough.
  logCalls.systemLog = [](const char*) {};
}

QuietStdout::~QuietStdout() {
  std::fflush(stdout);
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
  logCalls.systemLog = savedSystemLog_;
}

}  // namespace quillory::pack
