// Waiting for what happens in another process or thread.
#pragma once
#include <chrono>
#include <thread>

namespace quillory::testing {

/// Whether `condition` becomes true. It is looked at until it is; a minute passes only where it
/// never will be, whatever else the machine has to do.
template <typename Condition>
bool eventually(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

/// As a person does who presses a button in the moment in which its window appears, where the
/// toolkit may lose that: `act` again and again, a second apart, until `condition` is true.
template <typename Act, typename Condition>
bool actUntil(Act act, Condition condition) {
  auto next = std::chrono::steady_clock::now();
  return eventually([&] {
    if (condition()) return true;
    if (std::chrono::steady_clock::now() >= next) {
      act();
      next += std::chrono::seconds(1);
    }
    return false;
  });
}

}  // namespace quillory::testing
