#include "support/command_output.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "support/owned.h"
#include "support/process.h"
#include "support/strings.h"

namespace quillory {
namespace {

// A piece holds 6 characters and a terminator: a command that prints slowly is read as it prints.
constexpr int kPieceCapacity = 7;

std::string readAll(std::FILE* stream) {
  std::string text;
  char piece[kPieceCapacity];
  while (std::fgets(piece, sizeof piece, stream) != nullptr) text += piece;
  return text;
}

char* allocTrimmed(std::string text) {
  // A tab stays, by intent.
  text.erase(text.find_last_not_of("\n\r ") + 1);
  return allocCopy(text.c_str());
}

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
  /// A stream over the read end, which then belongs to it.
  OwnedFile takeReader() {
    OwnedFile reader(fdopen(ends_[0], "r"));
    if (reader != nullptr) ends_[0] = -1;
    return reader;
  }

 private:
  void closeEnd(int which) {
    if (ends_[which] != -1) close(ends_[which]);
    ends_[which] = -1;
  }
  int ends_[2] = {-1, -1};
};

// posix_spawn() with the child's standard output on `output`; 0, or an error number.
int spawnWithOutput(pid_t* child, const std::vector<std::string>& arguments, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  const int error = posix_spawn(child, arguments[0].c_str(), &actions, nullptr,
                                argumentPointers(arguments).data(), getEnvP());
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

}  // namespace

char* runCommandGetOutput(const char* command) {
  std::FILE* const output = popen(command, "r");
  if (output == nullptr) return nullptr;
  std::string text = readAll(output);
  pclose(output);
  return allocTrimmed(std::move(text));
}

char* runProgramGetOutput(const std::vector<std::string>& arguments) {
  Pipe pipe;
  if (arguments.empty() || !pipe.isOpen()) return nullptr;
  pid_t child = 0;
  if (spawnWithOutput(&child, arguments, pipe.writeEnd()) != 0) return nullptr;
  pipe.closeWriteEnd();

  std::string text;
  if (const OwnedFile reader = pipe.takeReader()) text = readAll(reader.get());
  int status = 0;
  processCalls.waitFor(child, &status);
  return allocTrimmed(std::move(text));
}

char* escapeSpaces(char* text, bool escape) {
  if (!escape) return text;
  std::string escaped;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == ' ') escaped += '\\';
    escaped += *c;
  }
  return allocCopy(escaped.c_str());
}

char* quoteSpaciousString(const char* text) {
  return allocCopy(('"' + std::string(text) + '"').c_str());
}

char* quoteStringIfNecessary(char* text) {
  return text[0] == '"' ? text : quoteSpaciousString(text);
}

}  // namespace quillory
