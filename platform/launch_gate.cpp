#include "platform/launch_gate.h"

namespace quillory::platform {

void LaunchGate::open() {
  {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
  }
  opened_.notify_all();
}

bool LaunchGate::waitFor(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  return opened_.wait_for(lock, patience, [this] { return isOpen_; });
}

LaunchGate& endOfLaunch() {
  // For good: a thread may wait while the process ends.
  static auto* const gate = new LaunchGate;
  return *gate;
}

}  // namespace quillory::platform
