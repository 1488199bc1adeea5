// quillory-pack: packs Java applications for the launcher.
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "packager/bytes/work_folder.h"
#include "packager/cli/command_line.h"
#include "packager/report/exit_statuses.h"
#include "support/standard_streams.h"

int main(int argc, char** argv) {
  quillory::fillStandardStreams();
  std::signal(SIGPIPE, SIG_DFL);
  quillory::pack::noticeInterruptions();
  int status = quillory::pack::runCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}, std::cout,
                                              std::cerr, isatty(STDERR_FILENO) != 0);
  std::cout.flush();
  if (!std::cout) {
    std::cerr << "error: standard output cannot be written\n";
    status = quillory::pack::kFailed;
  }
  if (const int number = quillory::pack::interruptingSignal()) {
    std::signal(number, SIG_DFL);
    std::raise(number);
  }
  return status;
}
