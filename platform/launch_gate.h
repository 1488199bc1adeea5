// A moment that other threads may wait for, though not for ever.
#pragma once
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quillory::platform {

class LaunchGate {
 public:
  /// The moment has come, for good. Any thread.
  void open();

  /// Returns as soon as the moment has come, and after `patience` at the latest; whether it has
  /// come. Any thread but the one that opens.
  bool waitFor(std::chrono::milliseconds patience);

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool isOpen_ = false;
};

/// The end of the application object's launch: from then on what the desktop wanted opened by this
/// start has been delivered. Lives as long as the process.
LaunchGate& endOfLaunch();

}  // namespace quillory::platform
