#import "ui/redrawer_cocoa.h"

#include "platform/autorelease_pool.h"
#include "support/log.h"
#import "ui/splash_view_cocoa.h"

@implementation Redrawer

- (void)runThread:(SplashView*)view {
  const quillory::AutoreleasePool threadPool;
  quillory::logToSystem("Redrawer running!\n");
  while (![[NSThread currentThread] isCancelled]) {
    const quillory::AutoreleasePool pool;
    [NSThread sleepForTimeInterval:0.03];
    [view performSelectorOnMainThread:@selector(requestBarRedraw) withObject:nil waitUntilDone:NO];
  }
}

@end
