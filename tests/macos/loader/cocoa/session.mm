// NSURLSession, as far as platform/macos/session_download.mm asks for it: a download task, whose
// delegate hears of it on a thread of the session's. The transfer is that of the stand-in for
// NSURLDownload. Redirects are followed there without a question, so that nobody is asked here.
#import <Foundation/Foundation.h>

#include "platform/autorelease_pool.h"
#import "platform/gnustep/url_download.h"

@class ImageSession;
@class ImageSessionTask;

// What the delegate answers to.
@interface NSObject (SessionDelegate)
- (void)URLSession:(ImageSession*)session
                 downloadTask:(ImageSessionTask*)task
                 didWriteData:(int64_t)length
            totalBytesWritten:(int64_t)written
    totalBytesExpectedToWrite:(int64_t)expected;
- (void)URLSession:(ImageSession*)session
                 downloadTask:(ImageSessionTask*)task
    didFinishDownloadingToURL:(NSURL*)place;
- (void)URLSession:(ImageSession*)session
                    task:(ImageSessionTask*)task
    didCompleteWithError:(NSError*)error;
@end

@interface ImageSessionConfiguration : NSObject {
 @public
  NSTimeInterval timeout;
}
@end

@implementation ImageSessionConfiguration

+ (ImageSessionConfiguration*)ephemeralSessionConfiguration {
  return [[[ImageSessionConfiguration alloc] init] autorelease];
}

- (void)setTimeoutIntervalForRequest:(NSTimeInterval)seconds {
  timeout = seconds;
}

@end

/// Keeps its delegate until it is told to let go.
@interface ImageSession : NSObject {
 @public
  id delegate;
  NSTimeInterval timeout;
  BOOL isCancelled;
}
@end

@interface ImageSessionTask : NSObject {
 @public
  ImageSession* session;
  NSURLRequest* request;
  NSURLResponse* response;
  NSString* place;
  int64_t written;
  BOOL isOver;
}
- (void)resume;
- (NSURLResponse*)response;
- (void)endWith:(NSError*)error;
@end

@implementation ImageSession

+ (ImageSession*)sessionWithConfiguration:(ImageSessionConfiguration*)configuration
                                 delegate:(id)newDelegate
                            delegateQueue:(id)queue {
  (void)queue;  // A thread of its own is what none means.
  ImageSession* session = [[[ImageSession alloc] init] autorelease];
  session->delegate = [newDelegate retain];
  session->timeout = configuration->timeout;
  return session;
}

- (ImageSessionTask*)downloadTaskWithRequest:(NSURLRequest*)request {
  ImageSessionTask* task = [[[ImageSessionTask alloc] init] autorelease];
  task->session = [self retain];
  task->request = [request retain];
  return task;
}

- (void)finishTasksAndInvalidate {
  [delegate autorelease];
  delegate = nil;
}

- (void)invalidateAndCancel {
  isCancelled = YES;
}

@end

@implementation ImageSessionTask

- (void)dealloc {
  [session release];
  [request release];
  [response release];
  [place release];
  [super dealloc];
}

// What is sent to a thread is a source of its run loop there, and here nothing that such a loop
// would turn for: a timer that never fires is.
- (void)resume {
  constexpr double kNever = 1e9;
  [NSTimer scheduledTimerWithTimeInterval:kNever
                                   target:[NSProcessInfo processInfo]
                                 selector:@selector(processName)
                                 userInfo:nil
                                  repeats:NO];
  [NSThread detachNewThreadSelector:@selector(run) toTarget:self withObject:nil];
}

- (NSURLResponse*)response {
  return response;
}

- (void)run {
  constexpr double kTurn = 0.05;
  const quillory::AutoreleasePool pool;
  NSString* name = [[NSProcessInfo processInfo] globallyUniqueString];
  place = [[NSTemporaryDirectory() stringByAppendingPathComponent:name] retain];
  NSMutableURLRequest* timed = [[request mutableCopy] autorelease];
  [timed setTimeoutInterval:session->timeout];
  URLDownload* download = [[URLDownload alloc] initWithRequest:timed delegate:self];
  [download setDestination:place allowOverwrite:YES];
  while (!isOver && !session->isCancelled)
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                             beforeDate:[NSDate dateWithTimeIntervalSinceNow:kTurn]];
  if (!isOver) {
    [download cancel];
    [self endWith:[NSError errorWithDomain:NSURLErrorDomain code:NSURLErrorCancelled userInfo:nil]];
  }
  [download release];
}

- (void)endWith:(NSError*)error {
  isOver = YES;
  [session->delegate URLSession:session task:self didCompleteWithError:error];
  [[NSFileManager defaultManager] removeFileAtPath:place handler:nil];
  if (session->isCancelled) [session finishTasksAndInvalidate];
}

- (void)download:(URLDownload*)download didReceiveResponse:(NSURLResponse*)its {
  (void)download;
  [response autorelease];
  response = [its retain];
}

- (void)download:(URLDownload*)download didReceiveDataOfLength:(NSUInteger)length {
  (void)download;
  written += static_cast<int64_t>(length);
  [session->delegate URLSession:session
                   downloadTask:self
                   didWriteData:static_cast<int64_t>(length)
              totalBytesWritten:written
      totalBytesExpectedToWrite:[response expectedContentLength]];
}

- (void)downloadDidFinish:(URLDownload*)download {
  (void)download;
  [session->delegate URLSession:session
                   downloadTask:self
      didFinishDownloadingToURL:[NSURL fileURLWithPath:place]];
  [self endWith:nil];
}

- (void)download:(URLDownload*)download didFailWithError:(NSError*)error {
  (void)download;
  [self endWith:error];
}

@end
