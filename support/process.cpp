#include "support/process.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <cerrno>

namespace quillory {
namespace {

int spawnProcess(pid_t* child, const char* path, const posix_spawn_file_actions_t* redirections,
                 char* const arguments[], char* const environment[]) {
  return posix_spawn(child, path, redirections, nullptr, arguments, environment);
}

pid_t waitForProcess(pid_t child, int* status) {
  for (;;) {
    const pid_t ended = waitpid(child, status, 0);
    if (ended != -1 || errno != EINTR) return ended;
  }
}

int runShellCommand(const char* command) { return system(command); }

}  // namespace

ProcessCalls processCalls{spawnProcess, waitForProcess, runShellCommand};

std::vector<char*> argumentPointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

bool isSafeInShellQuotes(std::string_view path) {
  return path.find_first_of("\"$`\\") == std::string_view::npos;
}

}  // namespace quillory
