// Clocks that tell what a test says.
#pragma once
#include <cstdint>
#include <deque>
#include <utility>

#include "support/clock.h"
#include "support/log.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"
#include "tests/harness/scoped_replace.h"

namespace quillory::testing {

inline std::deque<std::uint64_t> readings;

inline std::uint64_t nextReading() {
  if (readings.empty()) return 0;
  const std::uint64_t now = readings.front();
  if (readings.size() > 1) readings.pop_front();
  return now;
}

// A clock that tells the given milliseconds one after another, and the last one from then on.
class ScriptedClock {
 public:
  explicit ScriptedClock(std::deque<std::uint64_t> millis)
      : replaced_(timeCalls.nowMillis, nextReading) {
    readings = std::move(millis);
  }

 private:
  ScopedReplace<decltype(timeCalls.nowMillis)> replaced_;
};

// A clock that stands still, from before the next message on: every prefix tells 0 elapsed.
class StoppedClock {
 public:
  explicit StoppedClock(std::uint64_t millis = 1795000000042) : clock_({millis}) {
    const CapturedLog quiet;
    const CapturedOutput unseen;
    logMessage("the reading of this message is the last one\n");
  }

 private:
  ScriptedClock clock_;
};

}  // namespace quillory::testing
