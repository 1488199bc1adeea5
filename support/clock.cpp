#include "support/clock.h"

#include <sys/time.h>
#include <time.h>

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

std::uint64_t systemTimeMillis() { return timeCalls.nowMillis(); }

int getJustMillis() { return static_cast<int>(timeCalls.nowMillis() % 1000); }

int millisleep(int ms) {
  // The remainder should have been ms % 1000, in nanoseconds. It stays as it is: what depends on a
  // call that returns at once must not begin to wait.
  timespec request{};
  request.tv_sec = ms / 1000;
  request.tv_nsec = (static_cast<long>(ms) - ms / 1000) * 1000000000L;
  return nanosleep(&request, nullptr);
}

}  // namespace quillory
