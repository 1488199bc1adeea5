// Other programs, users, and where this program is. A Mach-O program is started in a loader, which
// is this one.
#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/image_bytes.h"
#include "tests/macos/loader/own_program.h"
#include "tests/macos/loader/system/file_numbers.h"
#include "tests/macos/loader/system/numbers.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

// There the type is a pointer.
using TheirActions = posix_spawn_file_actions_t*;

int theirActionsInit(TheirActions* actions) {
  *actions = new posix_spawn_file_actions_t;
  return asTheirError(posix_spawn_file_actions_init(*actions));
}

int theirActionsDestroy(TheirActions* actions) {
  const int result = posix_spawn_file_actions_destroy(*actions);
  delete *actions;
  return asTheirError(result);
}

int theirActionsAdddup2(TheirActions* actions, int from, int to) {
  return asTheirError(posix_spawn_file_actions_adddup2(*actions, from, to));
}

int theirActionsAddclose(TheirActions* actions, int file) {
  return asTheirError(posix_spawn_file_actions_addclose(*actions, file));
}

int theirActionsAddopen(TheirActions* actions, int file, const char* path, int flags,
                        unsigned mode) {
  return asTheirError(
      posix_spawn_file_actions_addopen(*actions, file, path, ourOpenFlags(flags), mode));
}

/// What to start instead of a program, when that is an image: the loader, with the image named in
/// the environment.
class Start {
 public:
  Start(const char* path, char* const* environment) : path_(path) {
    for (; *environment != nullptr; ++environment) variables_.push_back(*environment);
    if (access(path, X_OK) == 0 && isMachO(path)) {
      image_ = std::string(kImageVariable) + "=" + path;
      variables_.push_back(image_.data());
      path_ = loaderPath();
    }
    variables_.push_back(nullptr);
  }
  const char* path() const { return path_.c_str(); }
  char* const* environment() { return variables_.data(); }

 private:
  std::string path_;
  std::string image_;
  std::vector<char*> variables_;
};

int theirSpawn(pid_t* child, const char* path, const TheirActions* actions, const void* attributes,
               char* const* arguments, char* const* environment) {
  if (attributes != nullptr) fail("posix_spawn with attributes");
  Start start(path, environment);
  return asTheirError(posix_spawn(child, start.path(), actions == nullptr ? nullptr : *actions,
                                  nullptr, arguments, start.environment()));
}

int theirExecve(const char* path, char* const* arguments, char* const* environment) {
  Start start(path, environment);
  return execve(start.path(), arguments, start.environment());
}

int theirExecvp(const char* file, char* const* arguments) {
  if (std::strchr(file, '/') != nullptr) return theirExecve(file, arguments, environ);
  return execvp(file, arguments);
}

pid_t theirWaitpid(pid_t child, int* status, int options) {
  constexpr int kTheirNoHang = 1;
  constexpr int kTheirUntraced = 2;
  if ((options & ~(kTheirNoHang | kTheirUntraced)) != 0) fail("waitpid: options", options);
  int ours = 0;
  const pid_t result = waitpid(child, &ours, options);
  if (result > 0 && status != nullptr) *status = theirWaitStatus(ours);
  return result;
}

struct TheirSignalInformation {
  int signal;
  int error;
  int code;
  int process;
  std::uint32_t user;
  int status;
  void* address;
  void* value;
  long band;
  unsigned long spares[7];
};
static_assert(sizeof(TheirSignalInformation) == 104);

int theirWaitid(int kind, std::uint32_t id, TheirSignalInformation* theirs, int options) {
  constexpr struct {
    int theirs;
    int ours;
  } kOptions[] = {
      {0x1, WNOHANG}, {0x4, WEXITED}, {0x8, WSTOPPED}, {0x10, WCONTINUED}, {0x20, WNOWAIT}};
  int wanted = 0;
  int rest = options;
  for (const auto& option : kOptions) {
    if ((rest & option.theirs) != 0) wanted |= option.ours;
    rest &= ~option.theirs;
  }
  if (rest != 0) fail("waitid: options", options);
  siginfo_t ours{};
  const int result = waitid(static_cast<idtype_t>(kind), id, &ours, wanted);  // 0 to 2 on both
  if (result != 0 || theirs == nullptr) return result;
  *theirs = {};
  if (ours.si_pid == 0) return result;
  theirs->signal = theirSignal(ours.si_signo);
  theirs->code = ours.si_code;  // the same for a child's end
  theirs->process = ours.si_pid;
  theirs->user = ours.si_uid;
  theirs->status = ours.si_code == CLD_EXITED ? ours.si_status : theirSignal(ours.si_status);
  return result;
}

int theirSystem(const char* command) {
  const int status = system(command);
  return status == -1 || command == nullptr ? status : theirWaitStatus(status);
}

// Not a function of its own in this C library's shared part.
int theirAtexit(void (*function)()) { return std::atexit(function); }

struct TheirUser {
  char* name;
  char* password;
  std::uint32_t user;
  std::uint32_t group;
  long changed;
  char* sessionClass;
  char* fullName;
  char* home;
  char* shell;
  long expires;
};
static_assert(sizeof(TheirUser) == 72);

TheirUser* theirGetpwuid(std::uint32_t user) {
  thread_local TheirUser theirs;
  static char noClass[] = "";
  const passwd* const ours = getpwuid(user);
  if (ours == nullptr) return nullptr;
  theirs = {ours->pw_name, ours->pw_passwd, ours->pw_uid, ours->pw_gid,   0,
            noClass,       ours->pw_gecos,  ours->pw_dir, ours->pw_shell, 0};
  return &theirs;
}

char*** theirEnvironPlace() { return &environ; }

// What lies between the variables of a frame and its return address, and what a function calls that
// finds something else there.
const std::uintptr_t kTheirCanary = 0x9e3779b97f4a7c00;

[[noreturn]] void theirStackCheckFail() {
  std::fputs("macho_loader: a function of the image has overrun its stack\n", stderr);
  std::abort();
}

int* theirArgumentCount() { return &ownArguments().count; }

char*** theirArgumentList() { return &ownArguments().list; }

// The buffer is 4096 bytes there, and the result the length.
int theirPidpath(int process, void* buffer, std::uint32_t size) {
  const std::string link = "/proc/" + std::to_string(process) + "/exe";
  std::vector<char> path(4096);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  if (length < 0) return 0;
  std::string found(path.data(), static_cast<std::size_t>(length));
  if (process == getpid()) found = ownProgram();
  if (found.size() >= size) {
    errno = ENOBUFS;
    return 0;
  }
  std::memcpy(buffer, found.c_str(), found.size() + 1);
  return static_cast<int>(found.size());
}

int theirExecutablePath(char* buffer, std::uint32_t* size) {
  const std::string path = ownProgram();
  const bool hasRoom = path.size() < *size;
  *size = static_cast<std::uint32_t>(path.size() + 1);
  if (!hasRoom) return -1;
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}

}  // namespace

Symbols processSymbols() {
  static const Symbol kSymbols[] = {
      {"__NSGetArgc", code(theirArgumentCount)},
      {"__NSGetArgv", code(theirArgumentList)},
      {"__NSGetEnviron", code(theirEnvironPlace)},
      {"__NSGetExecutablePath", code(theirExecutablePath)},
      {"___stack_chk_fail", code(theirStackCheckFail)},
      {"___stack_chk_guard", &kTheirCanary},
      {"_atexit", code(theirAtexit)},
      {"_execve", code(theirExecve)},
      {"_execvp", code(theirExecvp)},
      {"_getpwuid", code(theirGetpwuid)},
      {"_posix_spawn", code(theirSpawn)},
      {"_posix_spawn_file_actions_addclose", code(theirActionsAddclose)},
      {"_posix_spawn_file_actions_adddup2", code(theirActionsAdddup2)},
      {"_posix_spawn_file_actions_addopen", code(theirActionsAddopen)},
      {"_posix_spawn_file_actions_destroy", code(theirActionsDestroy)},
      {"_posix_spawn_file_actions_init", code(theirActionsInit)},
      {"_proc_pidpath", code(theirPidpath)},
      {"_system", code(theirSystem)},
      {"_waitid", code(theirWaitid)},
      {"_waitpid", code(theirWaitpid)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
