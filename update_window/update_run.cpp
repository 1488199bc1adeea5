#include "update_window/update_run.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include "support/clock.h"
#include "support/process.h"
#include "support/strings.h"

namespace quillory::window {
namespace {

constexpr int kNotStarted = 127;
constexpr int kSignalled = 128;
constexpr std::uint64_t kMillis = 1000;
constexpr std::size_t kMaxLine = std::size_t{64} * 1024;

class Pipe {
 public:
  Pipe() {
    if (pipe(ends_.data()) != 0) ends_ = {-1, -1};
    for (const int end : ends_)
      if (end >= 0) fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  ~Pipe() {
    closeWriteEnd();
    if (ends_[0] >= 0) close(ends_[0]);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  bool isOpen() const { return ends_[0] >= 0; }
  int readEnd() const { return ends_[0]; }
  int writeEnd() const { return ends_[1]; }
  void closeWriteEnd() {
    if (ends_[1] >= 0) close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  std::array<int, 2> ends_ = {-1, -1};
};

/// Takes what came; each line is handed on once it has its end.
void takeLines(std::string& pending, std::string_view came, const UpdateRun::OnLine& onLine) {
  pending += came;
  for (std::size_t end; (end = pending.find('\n')) != std::string::npos;) {
    onLine(parseUpdateLine(std::string_view(pending).substr(0, end)));
    pending.erase(0, end + 1);
  }
  // Whoever writes that is no program of ours.
  if (pending.size() > kMaxLine) pending.clear();
}

/// Milliseconds until `end`, as poll() takes them; -1 without an end.
int millisUntil(std::uint64_t end) {
  if (end == 0) return -1;
  const std::uint64_t now = timeCalls.nowMillis();
  return now >= end ? 0 : static_cast<int>(std::min<std::uint64_t>(end - now, INT_MAX));
}

/// False when the time is over before everything was said.
bool readLines(int from, std::uint64_t end, const UpdateRun::OnLine& onLine) {
  std::string pending;
  std::array<char, 4096> buffer;
  for (;;) {
    pollfd waited = {.fd = from, .events = POLLIN, .revents = 0};
    const int ready = poll(&waited, 1, millisUntil(end));
    if (ready == 0) return false;
    if (ready < 0 && errno != EINTR) return true;
    if (ready < 0) continue;
    const ssize_t size = read(from, buffer.data(), buffer.size());
    if (size == 0 || (size < 0 && errno != EINTR)) return true;
    if (size > 0) takeLines(pending, {buffer.data(), static_cast<std::size_t>(size)}, onLine);
  }
}

}  // namespace

bool UpdateRun::begin(const std::vector<std::string>& command, int output) {
  posix_spawn_file_actions_t redirections;
  posix_spawn_file_actions_init(&redirections);
  posix_spawn_file_actions_adddup2(&redirections, output, STDOUT_FILENO);
  const std::lock_guard lock(mutex_);
  const int error = processCalls.spawn(&process_, command[0].c_str(), &redirections,
                                       argumentPointers(command).data(), getEnvP());
  posix_spawn_file_actions_destroy(&redirections);
  if (error != 0) process_ = 0;
  if (process_ != 0 && isCancelled_) kill(process_, SIGTERM);
  return error == 0;
}

std::optional<int> UpdateRun::run(const std::vector<std::string>& command, int limitSeconds,
                                  const OnLine& onLine) {
  Pipe pipe;
  if (!pipe.isOpen() || !begin(command, pipe.writeEnd())) return kNotStarted;
  pipe.closeWriteEnd();
  const std::uint64_t end =
      limitSeconds > 0 ? timeCalls.nowMillis() + static_cast<std::uint64_t>(limitSeconds) * kMillis
                       : 0;
  if (!readLines(pipe.readEnd(), end, onLine)) return std::nullopt;
  int status = 0;
  const pid_t ended = processCalls.waitFor(process_, &status);
  const std::lock_guard lock(mutex_);
  process_ = 0;
  if (ended < 0) return kNotStarted;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

void UpdateRun::cancel() {
  const std::lock_guard lock(mutex_);
  isCancelled_ = true;
  if (process_ != 0) kill(process_, SIGTERM);
}

bool UpdateRun::isCancelled() const {
  const std::lock_guard lock(mutex_);
  return isCancelled_;
}

}  // namespace quillory::window
