#include "platform/gnustep/main_queue.h"

#import <Foundation/Foundation.h>

#include "platform/autorelease_pool.h"

@interface QueuedCall : NSObject {
 @public
  dispatch_function_t work;
  void* context;
}
- (void)call;
@end

@implementation QueuedCall
- (void)call {
  work(context);
}
@end

dispatch_queue_t dispatch_get_main_queue() { return nullptr; }

void dispatch_sync_f(dispatch_queue_t, void* context, dispatch_function_t work) {
  const quillory::AutoreleasePool pool;
  QueuedCall* call = [[QueuedCall alloc] init];
  call->work = work;
  call->context = context;
  // The mode is named because the default ones are asked of NSApplication: its first use here could
  // meet the main thread's first use of something else, and both would wait for ever.
  [call performSelectorOnMainThread:@selector(call)
                         withObject:nil
                      waitUntilDone:YES
                              modes:[NSArray arrayWithObject:NSDefaultRunLoopMode]];
  [call release];
}
