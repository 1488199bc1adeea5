#include "platform/gnustep/run_loop_turns.h"

#import <Foundation/Foundation.h>
#include <sys/eventfd.h>

#include <cstdint>

/// Is asked before every wait of the loop, and lets every second one end at once: by a descriptor
/// that is always ready, since nothing else ends a turn.
@interface TurnWatcher : NSObject <RunLoopEvents> {
  BOOL hasWaited;
}
- (BOOL)runLoopShouldBlock:(BOOL*)trigger;
@end

@implementation TurnWatcher

- (BOOL)runLoopShouldBlock:(BOOL*)trigger {
  // With both answers NO the descriptor is left out of this wait; with YES it is among those that
  // are waited for.
  *trigger = NO;
  if (hasWaited) return YES;
  hasWaited = YES;
  return NO;
}

- (void)receivedEvent:(void*)data
                 type:(RunLoopEventType)type
                extra:(void*)extra
              forMode:(NSString*)mode {
  (void)data, (void)type, (void)extra, (void)mode;
  hasWaited = NO;
}

@end

namespace quillory::platform {

void endTurnsBeforeSecondWait() {
  // Never read, so always ready.
  const int descriptor = eventfd(1, EFD_CLOEXEC);
  if (descriptor < 0) return;
  TurnWatcher* watcher = [[TurnWatcher alloc] init];
  [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void*>(std::intptr_t{descriptor})
                                  type:ET_RDESC
                               watcher:watcher
                               forMode:NSDefaultRunLoopMode];
}

}  // namespace quillory::platform
