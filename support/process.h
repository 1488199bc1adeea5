// The system's calls that start processes. The table is the seam for what spawns or runs a shell;
// support/program.h is how the launcher starts a program.
//
// Outside of it stand tools/elevation.cpp and runner/command_runner.cpp, which become another
// program (execve, execvp) and never return: their tests look at real processes, because what a
// made-up call could record would prove nothing.
#pragma once
#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace quillory {

struct ProcessCalls {
  /// posix_spawn() without attributes: 0, or an error number. `redirections` may be null.
  int (*spawn)(pid_t* child, const char* path, const posix_spawn_file_actions_t* redirections,
               char* const arguments[], char* const environment[]);
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
