#include "update/pace.h"

#include <algorithm>

#include "support/clock.h"
#include "update/chance.h"

namespace quillory::update {
namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kLongestBackOff = 6 * kHour;
constexpr double kSpread = 0.2;

// `seconds` and a fifth of them more or less, so that who failed together does not return together.
std::int64_t spread(std::int64_t seconds) {
  const double factor = 1 - kSpread + 2 * kSpread * anyPart();
  return static_cast<std::int64_t>(static_cast<double>(seconds) * factor);
}

}  // namespace

std::int64_t now() { return static_cast<std::int64_t>(getCurrentTimeMillis() / 1000); }

bool isDue(const State& state, std::int64_t checkHours) {
  const std::int64_t longest = std::max(checkHours * kHour, kLongestBackOff) * 6 / 5;
  return state.nextCheck <= now() || state.nextCheck > now() + longest;
}

void noteAnswer(State& state, std::int64_t checkHours) {
  state.failures = 0;
  state.nextCheck = now() + spread(checkHours * kHour);
}

void noteFailure(State& state) {
  constexpr std::int64_t kMostDoublings = 20;
  const std::int64_t wait = kMinute << std::min(state.failures, kMostDoublings);
  state.failures = std::min(state.failures + 1, kMostDoublings);
  state.nextCheck = now() + spread(std::min(wait, kLongestBackOff));
}

}  // namespace quillory::update
