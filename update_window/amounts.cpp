#include "update_window/amounts.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace quillory::window {
namespace {

struct Unit {
  const char* name;
  double bytes;
  int digits;  ///< behind the point
};
constexpr std::array<Unit, 4> kUnits = {{
    {"GB", 1e9, 1},
    {"MB", 1e6, 1},
    {"KB", 1e3, 0},
    {"bytes", 1, 0},
}};

const Unit& unitFor(std::int64_t bytes) {
  // From what would be shown as 1.0 of it.
  for (const Unit& unit : kUnits)
    if (static_cast<double>(bytes) >= unit.bytes * 0.9995) return unit;
  return kUnits.back();
}

std::string inUnit(std::int64_t bytes, const Unit& unit) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%.*f %s", unit.digits,
                static_cast<double>(bytes) / unit.bytes, unit.name);
  return text.data();
}

std::string about(std::int64_t count, const char* unit) {
  return "about " + std::to_string(count) + ' ' + unit + (count == 1 ? "" : "s") + " left";
}

std::int64_t rounded(std::int64_t value, std::int64_t to) { return (value + to / 2) / to; }

}  // namespace

std::string amountOf(std::int64_t bytes) { return inUnit(bytes, unitFor(bytes)); }

std::string partOf(std::int64_t done, std::int64_t total) {
  const Unit& unit = unitFor(total);
  return inUnit(done, unit) + " of " + inUnit(total, unit);
}

std::string timeLeft(std::int64_t seconds) {
  constexpr std::int64_t kFew = 5;
  constexpr std::int64_t kMinute = 60;
  constexpr std::int64_t kHour = 60 * kMinute;
  if (seconds < kFew) return "a few seconds left";
  // In steps: a number that changes every second is not read.
  if (seconds < kMinute - 2) return about(rounded(seconds, kFew) * kFew, "second");
  if (seconds < kHour - kMinute) return about(rounded(seconds, kMinute), "minute");
  return about(rounded(seconds, kHour), "hour");
}

}  // namespace quillory::window
