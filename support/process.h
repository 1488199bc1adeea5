// Starting other programs. The table is the seam for what spawns or runs a shell.
//
// Outside of it stand the calls whose tests look at real processes, because what a made-up call
// could record would prove nothing: support/command_output.cpp, which reads what a command prints
// from the pipe that the call itself makes (popen) or hands to the child (posix_spawn with file
// actions), and tools/elevation.cpp and runner/command_runner.cpp, which become another program
// (execve, execvp) and never return.
#pragma once
#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace quillory {

struct ProcessCalls {
  /// posix_spawn() without file actions and attributes: 0, or an error number.
  int (*spawn)(pid_t* child, const char* path, char* const arguments[], char* const environment[]);
  /// waitpid() without options; a signal to this process does not end the wait.
  pid_t (*waitFor)(pid_t child, int* status);
  /// system().
  int (*runShell)(const char* command);
};
extern ProcessCalls processCalls;

/// The form that spawn() and the exec family take: pointers into `texts`, and a null. Nothing is
/// changed through them; their type is older than const.
std::vector<char*> argumentPointers(const std::vector<std::string>& texts);

/// Whether `path` may stand between double quotes in a shell command as it is: it holds none of
/// '"', '$', '`' and '\'. Any other path has to be handled without a shell.
bool isSafeInShellQuotes(std::string_view path);

}  // namespace quillory
