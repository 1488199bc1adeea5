#include "support/clock.h"

#include <sys/time.h>

#include <chrono>
#include <thread>

namespace quillory {
namespace {

std::uint64_t readWallClock() {
  timeval now{};
  if (gettimeofday(&now, nullptr) != 0) return 0;
  return static_cast<std::uint64_t>(now.tv_sec) * 1000 +
         static_cast<std::uint64_t>(now.tv_usec) / 1000;
}

// Not usleep(): it may refuse a second or more, and a signal cuts it short.
void sleepFor(std::uint64_t micros) {
  std::this_thread::sleep_for(std::chrono::microseconds(micros));
}

}  // namespace

TimeCalls timeCalls{readWallClock, sleepFor};

std::uint64_t getCurrentTimeMillis() { return timeCalls.nowMillis(); }

}  // namespace quillory
