#include "packager/config/rollout.h"

#include <cctype>

namespace quillory::pack {
namespace {

constexpr std::size_t kMostDigits = 3;

}  // namespace

std::optional<RolloutPlan> parseRollout(const std::string& text) {
  std::size_t digits = 0;
  while (digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits])) != 0) {
    ++digits;
  }
  if (digits == 0 || digits > kMostDigits) {
    return std::nullopt;
  }
  const int number = std::stoi(text.substr(0, digits));
  const std::size_t unitAt = text.find_first_not_of(' ', digits);
  const std::string unit = unitAt == std::string::npos ? "" : text.substr(unitAt);
  if (unit == "%" && number <= 100) {
    return RolloutPlan{number, 0};
  }
  if ((unit == "d" || unit == "day" || unit == "days") && number >= 1 &&
      number <= kLongestRollout) {
    return RolloutPlan{100, number};
  }
  return std::nullopt;
}

std::string asText(const RolloutPlan& rollout) {
  const std::string share = rollout.percent == 100 ? "all" : std::to_string(rollout.percent) + " %";
  return share + (rollout.days == 0 ? " at once"
                                    : " within " + std::to_string(rollout.days) +
                                          (rollout.days == 1 ? " day" : " days"));
}

}  // namespace quillory::pack
