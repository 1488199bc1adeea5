// The time by the standard library, which the functions of support/ are compared with.
#pragma once
#include <chrono>
#include <cstdint>

namespace quillory::testing {

inline std::int64_t epochMillis() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

}  // namespace quillory::testing
