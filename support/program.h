// Running another program: the one way to start a process, and the one reading of how it ended.
// Everything else that starts one (support/spawner.h, support/command_output.h and what has a list
// of arguments of its own) stands on it.
#pragma once
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace quillory {

/// Where what a program prints goes.
enum class ProgramOutput {
  kInherited,     ///< where our own goes
  kCaptured,      ///< its standard output into ProgramResult::output; its errors where ours go
  kBothCaptured,  ///< its standard output and its errors, as they come
  kDiscarded,     ///< neither is kept
};

struct ProgramOptions {
  /// Where the program starts, if not in our own working directory, which for the moment of the
  /// start is changed for the whole process. Where it cannot be changed to, the program starts in
  /// our own, with a warning in the log.
  std::optional<std::string> directory;
  ProgramOutput output = ProgramOutput::kInherited;
  /// Whether to return when the program has ended, or as soon as it has started. A program whose
  /// output is captured is always waited for.
  bool waits = true;
};

/// What became of a program. While it runs, and for one that cannot be waited for, it has neither
/// exited nor been ended by a signal.
struct ProgramResult {
  bool started = false;
  int error = 0;      ///< why it could not be started, an error number
  pid_t process = 0;  ///< of the one that started
  bool exited = false;
  int status = -1;     ///< its exit status (0 to 255) if it exited, else -1
  int signal = 0;      ///< the signal that ended it, or 0
  int waitStatus = 0;  ///< as waitpid() gave it, for the log
  std::string output;  ///< what was captured, to the last byte
};

/// Starts arguments[0], which is a path and not searched for, with the arguments (itself first) and
/// our environment. Not started when there is no program, or no pipe for its output. Captured
/// output ends when everybody who inherited it has closed it. Logs nothing about the program.
ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const ProgramOptions& options = {});

/// Waits for the end of a program that was started and not waited for, and notes it in `program`.
void waitForProgram(ProgramResult& program);

}  // namespace quillory
