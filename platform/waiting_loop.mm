#include "platform/waiting_loop.h"

#include "platform/autorelease_pool.h"

namespace quillory::platform {

void keepLoopWaiting() {
  const AutoreleasePool pool;
  constexpr NSTimeInterval kCenturySeconds = 100.0 * 365 * 24 * 3600;
  [NSTimer scheduledTimerWithTimeInterval:kCenturySeconds
                                   target:[NSRunLoop currentRunLoop]
                                 selector:@selector(description)
                                 userInfo:nil
                                  repeats:YES];
}

void runLoopOnce() {
  const AutoreleasePool pool;
  [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantFuture]];
}

}  // namespace quillory::platform
