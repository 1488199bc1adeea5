#include "platform/gnustep/main_loop_source.h"

#import <Foundation/Foundation.h>

#include <cstdint>
#include <utility>

#include "platform/autorelease_pool.h"
#include "platform/gnustep/main_loop.h"

/// Without a descriptor of the loop's, looks by itself.
@interface MainLoopWatcher : NSObject <RunLoopEvents>
- (void)look;
@end

@implementation MainLoopWatcher

- (void)look {
  const quillory::AutoreleasePool pool;
  quillory::platform::mainLoop().handleWaiting();
}

- (void)receivedEvent:(void*)data
                 type:(RunLoopEventType)type
                extra:(void*)extra
              forMode:(NSString*)mode {
  (void)data, (void)type, (void)extra, (void)mode;
  [self look];
}

@end

namespace quillory::platform {

void joinMainLoop() {
  constexpr NSTimeInterval kBetweenLooksSeconds = 0.02;
  static bool hasJoined = false;
  if (std::exchange(hasJoined, true)) return;
  const AutoreleasePool pool;
  MainLoopWatcher* watcher = [[MainLoopWatcher alloc] init];
  const int descriptor = mainLoop().descriptor();
  if (descriptor < 0) {
    [NSTimer scheduledTimerWithTimeInterval:kBetweenLooksSeconds
                                     target:watcher
                                   selector:@selector(look)
                                   userInfo:nil
                                    repeats:YES];
    return;
  }
  [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void*>(std::intptr_t{descriptor})
                                  type:ET_RDESC
                               watcher:watcher
                               forMode:NSDefaultRunLoopMode];
}

}  // namespace quillory::platform
