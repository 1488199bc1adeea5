#include "support/program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "support/log.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/strings.h"

namespace quillory {
namespace {

// The working directory belongs to the whole process, so it is changed for the moment of the spawn
// only: posix_spawn() itself has no portable way to give the child another one.
class WorkingDirectoryScope {
 public:
  explicit WorkingDirectoryScope(const std::optional<std::string>& directory) {
    if (!directory) return;
    previous_ = currentDirectory();
    isChanged_ = chdir(directory->c_str()) == 0;
    if (!isChanged_) logMessage("[Spawner] WARNING: couldn't change to %s\n", directory->c_str());
  }
  ~WorkingDirectoryScope() {
    if (isChanged_ && chdir(previous_.c_str()) != 0)
      logMessage("[Spawner] WARNING: couldn't change back to %s\n", previous_.c_str());
  }
  WorkingDirectoryScope(const WorkingDirectoryScope&) = delete;
  WorkingDirectoryScope& operator=(const WorkingDirectoryScope&) = delete;

 private:
  std::string previous_;
  bool isChanged_ = false;
};

// The two ends of a pipe, closed with their owner, and not inherited by any other child.
class Pipe {
 public:
  Pipe() {
    if (pipe(ends_) != 0) {
      ends_[0] = ends_[1] = -1;
      return;
    }
    for (const int end : ends_) fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool isOpen() const { return ends_[0] != -1; }
  int writeEnd() const { return ends_[1]; }
  void closeWriteEnd() { closeEnd(1); }

  /// What comes until everybody who has the write end is gone.
  std::string readToEnd() const {
    std::string text;
    std::array<char, 4096> buffer;
    for (;;) {
      const ssize_t size = read(ends_[0], buffer.data(), buffer.size());
      if (size > 0) text.append(buffer.data(), static_cast<std::size_t>(size));
      if (size == 0 || (size < 0 && errno != EINTR)) return text;
    }
  }

 private:
  void closeEnd(int which) {
    if (ends_[which] != -1) close(ends_[which]);
    ends_[which] = -1;
  }
  int ends_[2] = {-1, -1};
};

// What the child does with its standard streams before it becomes the program.
class Redirections {
 public:
  Redirections() { posix_spawn_file_actions_init(&actions_); }
  ~Redirections() { posix_spawn_file_actions_destroy(&actions_); }
  Redirections(const Redirections&) = delete;
  Redirections& operator=(const Redirections&) = delete;

  void outputTo(int file) { posix_spawn_file_actions_adddup2(&actions_, file, STDOUT_FILENO); }
  void outputNowhere() {
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  void errorsToOutput() {
    posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

ProgramResult startProgram(const std::vector<std::string>& arguments,
                           const std::optional<std::string>& directory,
                           const posix_spawn_file_actions_t* redirections) {
  ProgramResult program;
  const char* const path = arguments.empty() ? "" : arguments[0].c_str();
  {
    const WorkingDirectoryScope scope(directory);
    program.error = processCalls.spawn(&program.process, path, redirections,
                                       argumentPointers(arguments).data(), getEnvP());
  }
  program.started = program.error == 0;
  return program;
}

ProgramResult runCaptured(const std::vector<std::string>& arguments,
                          const ProgramOptions& options) {
  ProgramResult program;
  Pipe pipe;
  if (!pipe.isOpen()) {
    program.error = errno;
    return program;
  }
  Redirections redirections;
  redirections.outputTo(pipe.writeEnd());
  if (options.output == ProgramOutput::kBothCaptured) redirections.errorsToOutput();
  program = startProgram(arguments, options.directory, redirections.get());
  if (!program.started) return program;
  pipe.closeWriteEnd();
  program.output = pipe.readToEnd();
  waitForProgram(program);
  return program;
}

ProgramResult runUncaptured(const std::vector<std::string>& arguments,
                            const ProgramOptions& options) {
  Redirections nowhere;
  const bool isDiscarded = options.output == ProgramOutput::kDiscarded;
  if (isDiscarded) {
    nowhere.outputNowhere();
    nowhere.errorsToOutput();
  }
  ProgramResult program =
      startProgram(arguments, options.directory, isDiscarded ? nowhere.get() : nullptr);
  if (program.started && options.waits) waitForProgram(program);
  return program;
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments, const ProgramOptions& options) {
  const bool isCaptured =
      options.output == ProgramOutput::kCaptured || options.output == ProgramOutput::kBothCaptured;
  return isCaptured ? runCaptured(arguments, options) : runUncaptured(arguments, options);
}

void waitForProgram(ProgramResult& program) {
  const pid_t ended = processCalls.waitFor(program.process, &program.waitStatus);
  if (ended != program.process) return;
  program.exited = WIFEXITED(program.waitStatus);
  if (program.exited) program.status = WEXITSTATUS(program.waitStatus);
  if (WIFSIGNALED(program.waitStatus)) program.signal = WTERMSIG(program.waitStatus);
}

}  // namespace quillory
