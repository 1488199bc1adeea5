// The main thread's work before Foundation is there, and beside it afterwards: what other threads
// want done there, and descriptors that it looks after. Its own descriptor stands for all of them
// in Foundation's run loop.
#pragma once
#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace quillory::platform {

class MainLoop {
 public:
  MainLoop();
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  /// Runs work(context) on the main thread and waits for its end. From the main thread it would
  /// wait for itself.
  void perform(void (*work)(void*), void* context);

  /// Has the main thread do it in its next turn. Any thread.
  void post(std::function<void()> work);

  /// From now on `isReady` is called whenever `descriptor` can be read from. Main thread only.
  void watch(int descriptor, std::function<void()> isReady);
  void unwatch(int descriptor);

  /// Readable when handleWaiting() has something to do; -1 where the system had none left.
  int descriptor() const { return all_; }

  /// Does what is to be done now. Main thread only; work may call it in turn.
  void handleWaiting();

  /// Waits until there is something to do, and does it.
  void waitAndHandle();

 private:
  bool performNext();

  std::mutex mutex_;
  std::deque<std::function<void()>> posted_;
  std::map<int, std::function<void()>> watched_;
  int wake_ = -1;
  int all_ = -1;
};

/// That of the process, which lives as long as it does: threads may wait while it ends.
MainLoop& mainLoop();

}  // namespace quillory::platform
