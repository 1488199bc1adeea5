// NSURLDownload, whose shell exists in GNUstep without anything in it. The transfer runs on a
// thread of its own; the delegate's messages come on the thread that set the destination, while its
// run loop turns. They are download:didReceiveResponse:, download:didReceiveDataOfLength:,
// downloadDidFinish: and download:didFailWithError:, and one of the last two ends every transfer
// that was not cancelled. The delegate is retained until then.
#pragma once
#import <Foundation/Foundation.h>

namespace quillory::platform {

struct DownloadJob;

/// The class of downloads: URLDownload.
Class urlDownloadClass();

}  // namespace quillory::platform

@interface URLDownload : NSURLDownload {
 @private
  quillory::platform::DownloadJob* job;
}

/// Nil for a request without a URL.
- (id)initWithRequest:(NSURLRequest*)request delegate:(id)delegate;

/// Starts the transfer; a second call does nothing. A file at the path is there only after
/// downloadDidFinish:. Without `allowOverwrite` a file that is there already makes it fail.
- (void)setDestination:(NSString*)path allowOverwrite:(BOOL)allowOverwrite;

/// Ends the transfer without another message, and waits for its end for as long as it may take to
/// notice: at most two seconds.
- (void)cancel;

@end
