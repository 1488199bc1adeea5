#include "formats/downloads_cocoa.h"

#import "formats/downloader_cocoa.h"
#include "formats/downloads.h"
#include "platform/autorelease_pool.h"

namespace quillory {
namespace {

constexpr NSTimeInterval kLoopTurnSeconds = 0.2;
constexpr NSTimeInterval kIdleTurnSeconds = 0.05;

void waitForEnd(Downloader* downloader) {
  // A transfer that could not begin is over: there is nothing to wait for.
  while ([downloader isTransferring]) {
    const AutoreleasePool pool;
    NSDate* end = [NSDate dateWithTimeIntervalSinceNow:kLoopTurnSeconds];
    // Not runUntilDate:, which goes on to the end of its time when the transfer is over.
    // A loop that has nothing to wait for returns at once. What comes is handled a little later
    // then, instead of a processor being kept busy.
    if (![[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:end])
      [NSThread sleepForTimeInterval:kIdleTurnSeconds];
    [downloader endWhenLate];
  }
}

}  // namespace

int downloadThroughCocoa(const char* url, const char* destPath, const DownloadLimits& limits) {
  return downloadThroughCocoa(url, destPath, limits, kDownloadTimeoutSeconds);
}

int downloadThroughCocoa(const char* url, const char* destPath, const DownloadLimits& limits,
                         double timeoutSeconds) {
  const AutoreleasePool pool;
  NSString* address = [NSString stringWithUTF8String:url];
  NSString* path = [NSString stringWithUTF8String:destPath];
  if (address == nil || path == nil) {
    NSLog(@"Download failed");
    logDownloadFailure(url, "the address or the path is not UTF-8");
    return 1;
  }
  Downloader* downloader = [[Downloader alloc] init];
  [downloader setTimeoutSeconds:timeoutSeconds];
  [downloader setLimits:limits];
  [downloader startDownloadingURL:nil fromURL:address toFile:path];
  waitForEnd(downloader);
  [downloader release];
  return 1;
}

}  // namespace quillory
