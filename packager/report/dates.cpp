#include "packager/report/dates.h"

#include <ctime>

namespace quillory::pack {

std::string readableTime(std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts{};
  char text[64];
  if (gmtime_r(&time, &parts) == nullptr ||
      std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M UTC", &parts) == 0) {
    return std::to_string(seconds) + " s since 1970";
  }
  return text;
}

}  // namespace quillory::pack
