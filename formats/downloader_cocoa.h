// The delegate of one URL download at a time. What happens goes to the platform's log (NSLog).
#pragma once
#import <Foundation/Foundation.h>

#include <chrono>

#include "support/platform.h"

@interface Downloader : NSObject {
  BOOL isDone;
  NSURLResponse* downloadResponse;
  int bytesReceived;
 @private
  NSURLDownload* transfer;  // nil while none runs
  NSString* address;
  NSString* destination;
  NSTimeInterval timeoutSeconds;
  quillory::DownloadLimits limits;
  long long bytesOfAll;
  std::chrono::steady_clock::time_point start;
}

/// False from the start of a transfer to its end, be that good or bad. A transfer that could not
/// begin does not end.
- (BOOL)isDone;

/// Whether a transfer began and has not ended: isDone has yet to come.
- (BOOL)isTransferring;

- (NSURLResponse*)downloadResponse;
- (void)setDownloadResponse:(NSURLResponse*)response;

/// Of the current transfer. It wraps around at 2 GB, which only the log gets to see.
- (int)bytesReceived;

/// Silence of this length ends a transfer that begins from now on; kDownloadTimeoutSeconds at
/// first.
- (void)setTimeoutSeconds:(NSTimeInterval)seconds;

/// Of transfers that begin from now on; none at first.
- (void)setLimits:(const quillory::DownloadLimits&)newLimits;

/// Ends the transfer, as one that failed, when its time is over. To be called again and again while
/// one runs.
- (void)endWhenLate;

/// Begins a transfer, which goes on while this thread's run loop turns. The file gets its name at
/// the end of a complete one (downloads.h). `sender` is not used.
- (void)startDownloadingURL:(id)sender fromURL:(NSString*)url toFile:(NSString*)path;

- (NSURLRequest*)download:(NSURLDownload*)download
          willSendRequest:(NSURLRequest*)request
         redirectResponse:(NSURLResponse*)response;
- (void)download:(NSURLDownload*)download didReceiveResponse:(NSURLResponse*)response;
- (void)download:(NSURLDownload*)download didReceiveDataOfLength:(NSUInteger)length;
- (void)downloadDidFinish:(NSURLDownload*)download;
- (void)download:(NSURLDownload*)download didFailWithError:(NSError*)error;

@end
