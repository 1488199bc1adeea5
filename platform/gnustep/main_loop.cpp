#include "platform/gnustep/main_loop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstdint>
#include <thread>
#include <utility>

namespace quillory::platform {
namespace {

// Without descriptors, how often the loop looks by itself.
constexpr std::chrono::milliseconds kBetweenLooks{20};

void addTo(int all, int descriptor) {
  epoll_event event = {};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  epoll_ctl(all, EPOLL_CTL_ADD, descriptor, &event);
}

}  // namespace

MainLoop::MainLoop()
    : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), all_(epoll_create1(EPOLL_CLOEXEC)) {
  if (wake_ >= 0 && all_ >= 0) {
    addTo(all_, wake_);
    return;
  }
  if (all_ >= 0) close(all_);
  all_ = -1;
}

void MainLoop::post(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  posted_.push_back(std::move(work));
  if (wake_ >= 0) eventfd_write(wake_, 1);
}

void MainLoop::perform(void (*work)(void*), void* context) {
  struct Call {
    std::mutex mutex;
    std::condition_variable ended;
    bool isOver = false;
  } call;
  post([&call, work, context] {
    work(context);
    // With the lock held, as the call is gone when its thread goes on.
    const std::lock_guard lock(call.mutex);
    call.isOver = true;
    call.ended.notify_one();
  });
  std::unique_lock lock(call.mutex);
  call.ended.wait(lock, [&call] { return call.isOver; });
}

void MainLoop::watch(int descriptor, std::function<void()> isReady) {
  watched_[descriptor] = std::move(isReady);
  if (all_ >= 0) addTo(all_, descriptor);
}

void MainLoop::unwatch(int descriptor) {
  watched_.erase(descriptor);
  if (all_ >= 0) epoll_ctl(all_, EPOLL_CTL_DEL, descriptor, nullptr);
}

bool MainLoop::performNext() {
  std::function<void()> work;
  {
    const std::lock_guard lock(mutex_);
    if (posted_.empty()) return false;
    work = std::move(posted_.front());
    posted_.pop_front();
  }
  work();
  return true;
}

void MainLoop::handleWaiting() {
  std::uint64_t wakes = 0;
  if (wake_ >= 0) eventfd_read(wake_, &wakes);
  while (performNext()) {
  }
  if (all_ < 0) return;
  std::array<epoll_event, 8> events;
  const int count = epoll_wait(all_, events.data(), static_cast<int>(events.size()), 0);
  for (int i = 0; i < count; ++i) {
    const auto found = watched_.find(events[static_cast<std::size_t>(i)].data.fd);
    if (found == watched_.end()) continue;
    // A copy: it may end its own watch.
    const std::function<void()> isReady = found->second;
    isReady();
  }
}

void MainLoop::waitAndHandle() {
  if (all_ < 0) {
    std::this_thread::sleep_for(kBetweenLooks);
  } else {
    epoll_event first = {};
    epoll_wait(all_, &first, 1, -1);
  }
  handleWaiting();
}

MainLoop& mainLoop() {
  static auto* const loop = new MainLoop;
  return *loop;
}

}  // namespace quillory::platform
