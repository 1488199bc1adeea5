#include "packager/report/rest_time.h"

#include <algorithm>
#include <cmath>

namespace quillory::pack {
namespace {

// What the first moments promise is chance.
constexpr double kFirstSeconds = 2;
constexpr double kSecondsInWords = 100;

}  // namespace

void RestTime::look(double seconds, const std::deque<WorkPart>& parts) {
  worked_ += (seconds - lastLook_) * std::min(lastActive_, atATime_);
  lastLook_ = seconds;
  lastActive_ = 0;
  double done = 0;
  double left = 0;
  double longest = 0;
  for (const WorkPart& part : parts) {
    if (part.isSkipped) {
      continue;
    }
    const std::uint64_t ofPart = std::min<std::uint64_t>(part.done, part.total);
    const auto ofPartLeft = static_cast<double>(part.total - ofPart);
    lastActive_ += ofPartLeft > 0 ? 1 : 0;
    done += static_cast<double>(ofPart);
    left += ofPartLeft;
    longest = std::max(longest, ofPartLeft);
  }
  if (seconds < kFirstSeconds || done <= 0 || worked_ <= 0) {
    rest_.reset();
    return;
  }
  const double speed = done / worked_;
  rest_ = std::max(left / atATime_, longest) / speed;
}

std::string readableRest(std::optional<double> seconds) {
  if (!seconds) {
    return "";
  }
  const bool inSeconds = *seconds < kSecondsInWords;
  const auto count = std::lround(inSeconds ? *seconds : *seconds / 60);
  return std::to_string(count) + (inSeconds ? " s left" : " min left");
}

}  // namespace quillory::pack
