// A piece of code that ends the process, run in a forked child: what it wrote and its exit status.
// Unlike a death test, which starts the test program anew, it sees the folders of this very test.
#pragma once
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "tests/harness/temp_dir.h"

namespace quillory::testing {

struct Ended {
  int status = -1;  ///< exit status; kReturned when the code came back, -1 for a signal
  std::string out;  ///< standard output
  std::string log;  ///< the system log: every message without its time prefix

  bool logs(const std::string& text) const { return log.find(text) != std::string::npos; }
};
inline constexpr int kReturned = 250;

template <typename Body>
Ended inChild(Body body) {
  const TempDir folder;
  const std::string out = folder / "out", log = folder / "log";
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(open(out.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    // Without a Cocoa the system log is standard error.
    dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    body();
    std::fflush(nullptr);
    _exit(kReturned);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(log)};
}

}  // namespace quillory::testing
