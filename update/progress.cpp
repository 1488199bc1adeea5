#include "update/progress.h"

#include <algorithm>

#include "support/clock.h"

namespace quillory::update {
namespace {

constexpr std::uint64_t kPauseMillis = 100;
constexpr std::int64_t kMillisOfSecond = 1000;

}  // namespace

void Progress::tell(std::int64_t done) {
  const std::uint64_t now = getCurrentTimeMillis();
  if (first_ < 0) {
    first_ = done;
    start_ = now;
  }
  const bool isSoon = now >= lastTold_ && now - lastTold_ < kPauseMillis;
  if (isSoon && done < total_) return;
  lastTold_ = now;
  // A clock that is set back makes no rate.
  const std::int64_t passed = now > start_ ? static_cast<std::int64_t>(now - start_) : 0;
  const std::int64_t rate =
      passed == 0 ? 0 : std::max<std::int64_t>(0, done - first_) * kMillisOfSecond / passed;
  Line line = Line("progress").with("done", done).with("total", total_).with("rate", rate);
  if (rate > 0) line.with("rest", std::max<std::int64_t>(0, total_ - done) / rate);
  lines_(line);
}

}  // namespace quillory::update
