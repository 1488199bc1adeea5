#import "ui/app_runner_cocoa.h"

#include "platform/autorelease_pool.h"
#include "support/log.h"
#include "ui/splash.h"

namespace {

void showFor(int progress, double seconds) {
  quillory::splash::setProgress(progress);
  [NSThread sleepForTimeInterval:seconds];
}

}  // namespace

@implementation AppRunner

- (void)runThread:(id)argument {
  using quillory::splash::kProgressHidden;
  using quillory::splash::kProgressIndefinite;
  (void)argument;
  quillory::logToSystem("AppRunner running!\n");
  const quillory::AutoreleasePool pool;
  showFor(kProgressHidden, 1);
  showFor(kProgressIndefinite, 1);
  for (int percent = 0; percent <= 100; ++percent) showFor(percent, 0.03);
  showFor(kProgressIndefinite, 1);
  showFor(kProgressHidden, 1);
  quillory::splash::hideSplash();
  [NSThread sleepForTimeInterval:1];
}

@end
