// Running a piece of work on the main thread, which alone may touch windows, views and images.
#pragma once
#include <type_traits>

#import "cocoa.h"
#include "support/log.h"
#import "this_thread.h"

namespace quillory::platform {

/// Calls work(context). An exception of Cocoa's ends it there, with a line in the system log: a
/// window that cannot be drawn is no reason to end an installation. No template: g++ leaves out the
/// body of an @try in one.
inline void withoutExceptions(void (*work)(void*), void* context) {
  @try {
    work(context);
  } @catch (...) {
    logToSystem("Something could not be shown.\n");
  }
}

/// Runs `work` on the main thread and waits for its end; at once when this is the main thread. It
/// always returns, see withoutExceptions(). Work that uses Cocoa has an AutoreleasePool around
/// that.
template <typename Work>
void onMainThread(Work&& work) {
  using Plain = std::remove_reference_t<Work>;
  constexpr auto kCall = [](void* context) {
    withoutExceptions([](void* inner) { (*static_cast<Plain*>(inner))(); }, context);
  };
  if (isMainThread()) {
    kCall(&work);
    return;
  }
  dispatch_sync_f(dispatch_get_main_queue(), &work, kCall);
}

}  // namespace quillory::platform
