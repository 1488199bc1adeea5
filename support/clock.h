// The clock, and waiting. Everything that asks the time or waits goes through timeCalls, so that a
// test can replace both.
#pragma once
#include <cstdint>

namespace quillory {

/// How the launcher tells the time and waits. Assigned to by tests only, through ScopedReplace.
struct TimeCalls {
  /// Milliseconds since the Unix epoch, from the wall clock; 0 when the clock cannot be read.
  std::uint64_t (*nowMillis)();
  void (*sleepMicros)(std::uint64_t micros);  ///< returns after that time, or later
};
extern TimeCalls timeCalls;

/// Milliseconds since the Unix epoch; 0 when the clock cannot be read. For durations and stamps.
std::uint64_t getCurrentTimeMillis();

/// The same quantity.
std::uint64_t systemTimeMillis();

/// The millisecond part (0 to 999) of the current second; 0 when the clock cannot be read.
int getJustMillis();

/// Does not wait. The nanosecond field that it asks for is out of range for every `ms` of 1 or
/// more, so the call fails at once and returns -1; 0 returns 0. Kept so by intent: no caller may
/// count on it to wait.
int millisleep(int ms);

}  // namespace quillory
