// How a release reaches its users: all at once, a part of them, or more of them day by day.
#pragma once
#include <optional>
#include <string>

namespace quillory::pack {

inline constexpr int kLongestRollout = 365;  ///< days

struct RolloutPlan {
  int percent = 100;  ///< of the installations, in the end
  int days = 0;       ///< until it is that many, from none on; 0: at once

  bool operator==(const RolloutPlan&) const = default;
};

/// "25%", "7 days" or "7d"; none for anything else, a number out of its limits too: 0 to 100 per
/// cent, 1 to kLongestRollout days.
std::optional<RolloutPlan> parseRollout(const std::string& text);

/// "25 % at once", "all within 7 days": for people.
std::string asText(const RolloutPlan& rollout);

}  // namespace quillory::pack
