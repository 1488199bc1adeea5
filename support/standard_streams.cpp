#include "support/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace quillory {

void fillStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // Whatever is opened gets the lowest free number: this one, since those below are in use.
    (void)!open("/dev/null", O_RDWR);
  }
}

void outliveReaders() {
  // A handler, unlike an ignored signal, is not inherited by programs. Who ignored it already does
  // so for them, too.
  if (std::signal(
          SIGPIPE, +[](int) {}) == SIG_IGN)
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace quillory
