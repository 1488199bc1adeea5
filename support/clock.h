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

}  // namespace quillory
