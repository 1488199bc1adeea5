#import "platform/macos/session_download.h"

#include <unistd.h>

#include "platform/autorelease_pool.h"

using RedirectAnswer = void (^)(NSURLRequest*);

// What the delegate answers to.
@interface NSObject (DownloadDelegate)
- (NSURLRequest*)download:(id)download
          willSendRequest:(NSURLRequest*)request
         redirectResponse:(NSURLResponse*)response;
- (void)download:(id)download didReceiveResponse:(NSURLResponse*)response;
- (void)download:(id)download didReceiveDataOfLength:(NSUInteger)length;
- (void)downloadDidFinish:(id)download;
- (void)download:(id)download didFailWithError:(NSError*)error;
@end

/// A message of the session's, on its way to the thread that waits for it.
@interface SessionMessage : NSObject {
 @public
  NSURLResponse* response;
  NSURLRequest* request;
  NSError* error;
  long long length;
}
@end

@implementation SessionMessage
- (void)dealloc {
  [response release];
  [request release];
  [error release];
  [super dealloc];
}
@end

@implementation SessionDownload

- (id)initWithRequest:(NSURLRequest*)newRequest delegate:(id)newDelegate {
  self = [super init];
  if (self == nil) return nil;
  if ([newRequest URL] == nil) {
    [self release];
    return nil;
  }
  request = [newRequest retain];
  delegate = [newDelegate retain];
  return self;
}

- (void)dealloc {
  [request release];
  [delegate release];
  [destination release];
  [thread release];
  [task release];
  [session release];
  [super dealloc];
}

// The session retains this object until it is told to let go.
- (void)setDestination:(NSString*)path allowOverwrite:(BOOL)allowOverwrite {
  if (session != nil) return;
  destination = [path copy];
  mayOverwrite = allowOverwrite;
  thread = [[NSThread currentThread] retain];
  NSURLSessionConfiguration* configuration =
      [NSURLSessionConfiguration ephemeralSessionConfiguration];
  [configuration setTimeoutIntervalForRequest:[request timeoutInterval]];
  session = [[NSURLSession sessionWithConfiguration:configuration delegate:self
                                      delegateQueue:nil] retain];
  task = [[session downloadTaskWithRequest:request] retain];
  [task resume];
}

- (void)cancel {
  isOver = YES;
  [session invalidateAndCancel];
}

- (void)tell:(SEL)what about:(SessionMessage*)message andWait:(BOOL)wait {
  [self performSelector:what onThread:thread withObject:message waitUntilDone:wait];
}

// On the thread that waits, from here on.

- (void)tellResponse:(SessionMessage*)message {
  if (isOver || isResponseTold || message->response == nil) return;
  isResponseTold = YES;
  [delegate download:self didReceiveResponse:message->response];
}

- (void)tellData:(SessionMessage*)message {
  [self tellResponse:message];
  if (!isOver)
    [delegate download:self didReceiveDataOfLength:static_cast<NSUInteger>(message->length)];
}

- (void)tellEnd:(SessionMessage*)message {
  [self tellResponse:message];
  if (isOver) return;
  isOver = YES;
  [session finishTasksAndInvalidate];
  if (message->error == nil)
    [delegate downloadDidFinish:self];
  else
    [delegate download:self didFailWithError:message->error];
}

- (void)askAboutRedirect:(SessionMessage*)message {
  NSURLRequest* answer = isOver ? nil
                                : [delegate download:self
                                       willSendRequest:message->request
                                      redirectResponse:message->response];
  [answer retain];
  [message->request release];
  message->request = answer;
}

// On a thread of the session's.

- (void)URLSession:(NSURLSession*)sender
                          task:(NSURLSessionTask*)sendingTask
    willPerformHTTPRedirection:(NSURLResponse*)response
                    newRequest:(NSURLRequest*)next
             completionHandler:(RedirectAnswer)answer {
  const quillory::AutoreleasePool pool;
  SessionMessage* message = [[SessionMessage alloc] init];
  message->response = [response retain];
  message->request = [next retain];
  // One that was given up is waited for by nobody.
  if (!isOver) [self tell:@selector(askAboutRedirect:) about:message andWait:YES];
  answer(isOver ? nil : message->request);
  [message release];
}

- (void)URLSession:(NSURLSession*)sender
                 downloadTask:(NSURLSessionDownloadTask*)sendingTask
                 didWriteData:(int64_t)length
            totalBytesWritten:(int64_t)written
    totalBytesExpectedToWrite:(int64_t)expected {
  const quillory::AutoreleasePool pool;
  SessionMessage* message = [[SessionMessage alloc] init];
  message->response = [[sendingTask response] retain];
  message->length = length;
  [self tell:@selector(tellData:) about:message andWait:NO];
  [message release];
}

// The file is gone when this returns. What cannot be moved is not there at the end, which whoever
// keeps it notices.
- (void)URLSession:(NSURLSession*)sender
                 downloadTask:(NSURLSessionDownloadTask*)sendingTask
    didFinishDownloadingToURL:(NSURL*)place {
  const quillory::AutoreleasePool pool;
  if (mayOverwrite) unlink([destination fileSystemRepresentation]);
  [[NSFileManager defaultManager] moveItemAtPath:[place path] toPath:destination error:nullptr];
}

- (void)URLSession:(NSURLSession*)sender
                    task:(NSURLSessionTask*)sendingTask
    didCompleteWithError:(NSError*)error {
  const quillory::AutoreleasePool pool;
  SessionMessage* message = [[SessionMessage alloc] init];
  message->response = [[sendingTask response] retain];
  message->error = [error retain];
  [self tell:@selector(tellEnd:) about:message andWait:NO];
  [message release];
}

@end
