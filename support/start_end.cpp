#include "support/start_end.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace quillory {
namespace {

constexpr std::size_t kMostOfACause = 16 * 1024;

std::atomic<bool> isTold{false};
std::atomic<StartStage> stageNow{StartStage::kPreparing};

struct Notes {
  std::mutex mutex;
  std::string cause;
  std::string file;
  std::string log;
};

// Never destroyed: read while the process ends.
Notes& notes() {
  static Notes* const all = new Notes;
  return *all;
}

}  // namespace

void tellOfFailures() {
  {
    const std::lock_guard lock(notes().mutex);
    notes().cause.clear();
  }
  isTold = true;
}

bool areFailuresTold() noexcept { return isTold; }

void noteStage(StartStage stage) noexcept { stageNow = stage; }

StartStage stageOfStart() noexcept { return stageNow; }

void noteCause(std::string_view text) {
  if (!isTold) return;
  const std::lock_guard lock(notes().mutex);
  std::string& cause = notes().cause;
  cause.append(text.substr(0, std::min(text.size(), kMostOfACause - cause.size())));
}

std::string causeOfFailure() {
  const std::lock_guard lock(notes().mutex);
  return notes().cause;
}

void noteFailureFile(const std::string& path) {
  if (!isTold) return;
  const std::lock_guard lock(notes().mutex);
  notes().file = path;
}

void noteLogFile(const std::string& path) {
  if (!isTold) return;
  const std::lock_guard lock(notes().mutex);
  notes().log = path;
}

std::string logFileOfStart() {
  const std::lock_guard lock(notes().mutex);
  return notes().log;
}

std::string failureFile() {
  const std::lock_guard lock(notes().mutex);
  return notes().file;
}

}  // namespace quillory
