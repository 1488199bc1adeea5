#include "packager/keys/quiet_stdout.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "support/log.h"
#include "support/platform.h"

namespace quillory::pack {
namespace {

std::string last;

// Every message comes here too. One copy is shown; of what frames it nothing is kept.
void keepMessage(const char* message) {
  std::string text(message);
  if (text.find_first_not_of("*+\n") == std::string::npos) {
    return;
  }
  const std::size_t tag = text.find("] ");
  text.erase(0, tag == std::string::npos ? 0 : tag + 2);
  text.erase(0, text.find_first_not_of("* \t"));
  last = text.substr(0, text.find_last_not_of('\n') + 1);
}

}  // namespace

QuietStdout::QuietStdout(bool shown) : savedSystemLog_(platformCalls.systemLog) {
  std::fflush(stdout);
  saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  const int target =
      shown ? fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3) : open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(target, STDOUT_FILENO);
  close(target);
  last.clear();
  platformCalls.systemLog = keepMessage;
}

QuietStdout::~QuietStdout() { end(); }

std::string QuietStdout::lastMessage() { return last; }

void QuietStdout::end() {
  if (saved_ < 0) {
    return;
  }
  std::fflush(stdout);
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
  saved_ = -1;
  platformCalls.systemLog = savedSystemLog_;
}

}  // namespace quillory::pack
