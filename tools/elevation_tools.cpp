#include "tools/elevation_tools.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "support/process.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr int kSignalBase = 128;
constexpr int kNotStarted = -1;

/// -1 with a message, or the process.
pid_t spawnTool(const std::vector<std::string>& command) {
  pid_t child = -1;
  const int error =
      processCalls.spawn(&child, command[0].c_str(), argumentPointers(command).data(), getEnvP());
  if (error == 0) return child;
  complain(command[0] + " cannot be started: " + std::strerror(error));
  return -1;
}

int statusOf(pid_t child) {
  int status = 0;
  if (child < 0 || processCalls.waitFor(child, &status) != child) return kNotStarted;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalBase + WTERMSIG(status);
}

/// Another file in the place of one of our standard ones, for the moment in which a child inherits
/// it. Takes `file` over.
class Redirection {
 public:
  Redirection(int standard, int file)
      : standard_(standard), saved_(fcntl(standard, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    dup2(file, standard_);
    close(file);
  }
  ~Redirection() {
    if (saved_ < 0) return;
    dup2(saved_, standard_);
    close(saved_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  int standard_;
  int saved_;
};

/// What comes until every process that has the other end is gone.
std::string readToEnd(int file) {
  std::string text;
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t size = read(file, buffer.data(), buffer.size());
    if (size > 0) text.append(buffer.data(), static_cast<std::size_t>(size));
    if (size == 0 || (size < 0 && errno != EINTR)) return text;
  }
}

int openNowhere() { return open("/dev/null", O_WRONLY | O_CLOEXEC); }

}  // namespace

void complain(const std::string& message) {
  std::fprintf(stderr, "elev_mac: %s\n", message.c_str());
}

bool isRootForReal() { return getuid() == 0 && geteuid() == 0; }

std::string findTool(const std::vector<std::string>& folders, const std::string& name) {
  for (const std::string& folder : folders) {
    const std::string path = folder + '/' + name;
    struct stat found;
    if (stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) &&
        access(path.c_str(), X_OK) == 0)
      return path;
  }
  return "";
}

int runTool(const std::vector<std::string>& command) { return statusOf(spawnTool(command)); }

int runToolForOutput(const std::vector<std::string>& command, std::string& output) {
  int ends[2];
  if (pipe(ends) != 0) return kNotStarted;
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  pid_t child = -1;
  {
    const Redirection out(STDOUT_FILENO, ends[1]);
    child = spawnTool(command);
  }
  output = readToEnd(ends[0]);
  close(ends[0]);
  return statusOf(child);
}

int runToolQuietly(const std::vector<std::string>& command) {
  const Redirection out(STDOUT_FILENO, openNowhere());
  const Redirection err(STDERR_FILENO, openNowhere());
  return runTool(command);
}

}  // namespace quillory
