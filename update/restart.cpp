#include "update/restart.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>

#include "support/clock.h"
#include "support/log.h"
#include "support/program.h"
#include "update/cancel.h"

namespace quillory::update {
namespace {

constexpr std::uint64_t kTurnMicros = 50 * 1000;
constexpr int kTurnsOfSecond = 20;

// What the program says would go to who has started us, and has ended: a pipe without a reader ends
// the writer.
void leaveStreams() {
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nowhere < 0) return;
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
  close(nowhere);
}

bool isRunning(pid_t pid) { return kill(pid, 0) == 0 || errno == EPERM; }

}  // namespace

bool restartAfter(pid_t pid, const std::vector<std::string>& program, int limitSeconds) {
  for (int turn = 0; isRunning(pid) && turn < limitSeconds * kTurnsOfSecond; ++turn) {
    if (isCancelled) return false;
    timeCalls.sleepMicros(kTurnMicros);
  }
  if (isRunning(pid)) {
    logMessage("[Update] Process %d has not ended. Nothing is started\n", static_cast<int>(pid));
    return false;
  }
  setsid();
  leaveStreams();
  const ProgramResult result = runProgram(program, {.directory = "/", .waits = false});
  if (result.started) return true;
  logMessage("[Update] %s cannot be started: %s\n", program.front().c_str(),
             std::strerror(result.error));
  return false;
}

}  // namespace quillory::update
