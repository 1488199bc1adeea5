#import "formats/downloader_cocoa.h"

#include <algorithm>

#include "formats/downloads.h"
#include "formats/downloads_cocoa.h"
#import "url_download.h"

namespace {

/// 0 for a response without a status.
int statusOf(NSURLResponse* response) {
  if (![response isKindOfClass:[NSHTTPURLResponse class]]) return 0;
  return static_cast<int>([static_cast<NSHTTPURLResponse*>(response) statusCode]);
}

float percentOf(int received, long long expected) {
  return std::min(static_cast<float>(received) / static_cast<float>(expected) * 100.0F, 100.0F);
}

// "" for what has no UTF-8, nothing among it.
const char* textOf(NSString* string) {
  const char* text = [string UTF8String];
  return text == nullptr ? "" : text;
}

}  // namespace

@implementation Downloader

- (id)init {
  self = [super init];
  if (self != nil) timeoutSeconds = quillory::kDownloadTimeoutSeconds;
  return self;
}

- (void)dealloc {
  [downloadResponse release];
  [destination release];
  [address release];
  [super dealloc];
}

- (BOOL)isDone {
  return isDone;
}

- (BOOL)isTransferring {
  return transfer != nil;
}

- (NSURLResponse*)downloadResponse {
  return downloadResponse;
}

- (void)setDownloadResponse:(NSURLResponse*)response {
  [response retain];
  [downloadResponse release];
  downloadResponse = response;
}

- (int)bytesReceived {
  return bytesReceived;
}

- (void)setTimeoutSeconds:(NSTimeInterval)seconds {
  timeoutSeconds = seconds;
}

- (void)setLimits:(const quillory::DownloadLimits&)newLimits {
  limits = newLimits;
}

- (void)fail:(NSString*)reason address:(NSString*)from {
  NSLog(@"Download failed! Error - %@ %@", reason, from);
  quillory::logDownloadFailure(textOf(from), textOf(reason));
  if (destination != nil) quillory::discardDownload([destination fileSystemRepresentation]);
  isDone = YES;
}

// Whoever waits looks at it, from another thread perhaps: it is over when the file is kept or gone,
// and not before.
- (void)forgetTransfer {
  NSURLDownload* ended = transfer;
  transfer = nil;
  [ended release];
}

- (void)endBecause:(NSString*)reason {
  if (transfer == nil || isDone) return;
  [transfer cancel];
  [self fail:reason address:address];
  [self forgetTransfer];
}

- (void)endWhenLate {
  const std::chrono::duration<double> sinceStart = std::chrono::steady_clock::now() - start;
  if (limits.totalSeconds > 0 && sinceStart.count() >= limits.totalSeconds)
    [self endBecause:[NSString
                         stringWithFormat:@"not complete after %g seconds", limits.totalSeconds]];
}

- (void)startDownloadingURL:(id)sender fromURL:(NSString*)url toFile:(NSString*)path {
  NSLog(@"Starting download from = %@\n", url);
  isDone = NO;
  start = std::chrono::steady_clock::now();
  [address release];
  address = [url copy];
  NSURLRequest* request = [NSURLRequest requestWithURL:[NSURL URLWithString:url]
                                           cachePolicy:NSURLRequestUseProtocolCachePolicy
                                       timeoutInterval:timeoutSeconds];
  transfer = [[quillory::platform::urlDownloadClass() alloc] initWithRequest:request delegate:self];
  if (transfer == nil) {
    NSLog(@"Download failed");
    quillory::logDownloadFailure(textOf(url), "that is no address");
    return;
  }
  NSLog(@"Set destination file to %@\n", path);
  [destination release];
  destination = [path copy];
  const std::string partial = quillory::partialDownloadPath([path fileSystemRepresentation]);
  [transfer setDestination:[NSString stringWithUTF8String:partial.c_str()] allowOverwrite:YES];
}

- (NSURLRequest*)download:(NSURLDownload*)download
          willSendRequest:(NSURLRequest*)request
         redirectResponse:(NSURLResponse*)response {
  if (response == nil) return request;  // The request itself, in the form that is sent.
  NSString* from = [[response URL] absoluteString];
  NSString* to = [[request URL] absoluteString];
  if (quillory::mayRedirect(textOf(from), textOf(to))) return request;
  [self
      endBecause:[NSString stringWithFormat:@"it is redirected to %@, which is not followed", to]];
  return nil;
}

- (void)download:(NSURLDownload*)download didReceiveResponse:(NSURLResponse*)response {
  bytesReceived = 0;
  bytesOfAll = 0;
  [self setDownloadResponse:response];
}

- (void)download:(NSURLDownload*)download didReceiveDataOfLength:(NSUInteger)length {
  bytesReceived =
      static_cast<int>(static_cast<unsigned>(bytesReceived) + static_cast<unsigned>(length));
  const long long expected = [downloadResponse expectedContentLength];
  if (expected == NSURLResponseUnknownLength) {
    NSLog(@"Bytes received - %d", bytesReceived);
  } else {
    NSLog(@"Percent complete - %f", static_cast<double>(percentOf(bytesReceived, expected)));
  }
  bytesOfAll += static_cast<long long>(length);
  if (limits.maxBytes > 0 && bytesOfAll > limits.maxBytes)
    [self endBecause:[NSString stringWithFormat:@"more than %lld bytes", limits.maxBytes]];
}

- (void)keepFile {
  const int status = statusOf(downloadResponse);
  if (destination != nil && quillory::keepDownload([destination fileSystemRepresentation], status))
    return;
  [self fail:[NSString stringWithFormat:@"nothing to keep, HTTP status %d", status]
      address:[[downloadResponse URL] absoluteString]];
}

- (void)downloadDidFinish:(NSURLDownload*)download {
  NSLog(@"%@", @"downloadDidFinish");
  [self keepFile];
  isDone = YES;
  [self forgetTransfer];
}

- (void)download:(NSURLDownload*)download didFailWithError:(NSError*)error {
  [self fail:[error localizedDescription]
      address:[[error userInfo] objectForKey:NSURLErrorFailingURLStringErrorKey]];
  [self forgetTransfer];
}

@end
