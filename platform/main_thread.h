// Running a piece of work on the main thread, which alone may touch windows, views and images.
#pragma once
#include <type_traits>

#import "cocoa.h"

namespace quillory::platform {

/// Runs `work` on the main thread and waits for its end; at once when this is the main thread.
template <typename Work>
void onMainThread(Work&& work) {
  using Plain = std::remove_reference_t<Work>;
  if ([NSThread isMainThread]) {
    work();
    return;
  }
  dispatch_sync_f(dispatch_get_main_queue(), &work,
                  [](void* context) { (*static_cast<Plain*>(context))(); });
}

}  // namespace quillory::platform
