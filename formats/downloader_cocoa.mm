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

- (void)startDownloadingURL:(id)sender fromURL:(NSString*)url toFile:(NSString*)path {
  NSLog(@"Starting download from = %@\n", url);
  isDone = NO;
  NSURLRequest* request = [NSURLRequest requestWithURL:[NSURL URLWithString:url]
                                           cachePolicy:NSURLRequestUseProtocolCachePolicy
                                       timeoutInterval:timeoutSeconds];
  transfer = [[URLDownload alloc] initWithRequest:request delegate:self];
  if (transfer == nil) {
    NSLog(@"Download failed");
    return;
  }
  NSLog(@"Set destination file to %@\n", path);
  [destination release];
  destination = [path copy];
  const std::string partial = quillory::partialDownloadPath([path fileSystemRepresentation]);
  [transfer setDestination:[NSString stringWithUTF8String:partial.c_str()] allowOverwrite:YES];
}

- (void)download:(NSURLDownload*)download didReceiveResponse:(NSURLResponse*)response {
  bytesReceived = 0;
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
}

- (void)keepFile {
  const int status = statusOf(downloadResponse);
  if (destination != nil && quillory::keepDownload([destination fileSystemRepresentation], status))
    return;
  NSString* reason = [NSString stringWithFormat:@"nothing to keep, HTTP status %d", status];
  NSLog(@"Download failed! Error - %@ %@", reason, [[downloadResponse URL] absoluteString]);
}

- (void)downloadDidFinish:(NSURLDownload*)download {
  [download release];
  transfer = nil;
  NSLog(@"%@", @"downloadDidFinish");
  [self keepFile];
  isDone = YES;
}

- (void)download:(NSURLDownload*)download didFailWithError:(NSError*)error {
  [download release];
  transfer = nil;
  NSLog(@"Download failed! Error - %@ %@", [error localizedDescription],
        [[error userInfo] objectForKey:NSURLErrorFailingURLStringErrorKey]);
  if (destination != nil) quillory::discardDownload([destination fileSystemRepresentation]);
  isDone = YES;
}

@end
