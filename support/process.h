// Starting other programs. The table is the seam for everything that spawns or runs a shell.
#pragma once
#include <sys/types.h>

#include <string>
#include <string_view>

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

/// Whether `path` may stand between double quotes in a shell command as it is: it holds none of
/// '"', '$', '`' and '\'. Any other path has to be handled without a shell.
bool isSafeInShellQuotes(std::string_view path);

}  // namespace quillory
