#include "platform/gnustep/url_download.h"

#include <pthread.h>
#include <signal.h>
#include <time.h>

#include <memory>

#include "platform/autorelease_pool.h"
#include "platform/gnustep/curl_transfer.h"

namespace quillory::platform {

/// Shared by the thread that asked for the download and the one that carries it out. What is not
/// atomic is written by the latter before it posts a message that tells the former to read it.
struct DownloadJob {
  URLDownload* download = nil;
  id delegate = nil;          ///< retained
  NSThread* listener = nil;   ///< retained; where the delegate's messages go
  NSTimer* loopKeeper = nil;  ///< the loop's, while the transfer runs
  pthread_t worker = {};
  bool isStarted = false;
  bool isWorking = false;
  TransferRequest request;
  TransferResponse response;
  TransferResult result;
  std::atomic<std::size_t> unreportedBytes = 0;
  std::atomic<bool> isReportPosted = false;
};

}  // namespace quillory::platform

using quillory::AutoreleasePool;
using quillory::platform::DownloadJob;
using quillory::platform::TransferError;
using quillory::platform::TransferResponse;

static_assert(static_cast<int>(TransferError::kTimedOut) == NSURLErrorTimedOut);
static_assert(static_cast<int>(TransferError::kUnsupportedUrl) == NSURLErrorUnsupportedURL);
static_assert(static_cast<int>(TransferError::kCannotWrite) == NSURLErrorCannotWriteToFile);

// GNUstep's response leaves the length unknown, whatever the headers say.
@interface MeasuredResponse : NSHTTPURLResponse {
 @private
  NSInteger measuredLength;
}
- (id)initWithURL:(NSURL*)url statusCode:(NSInteger)status length:(NSInteger)length;
- (long long)expectedContentLength;
@end

@implementation MeasuredResponse

- (id)initWithURL:(NSURL*)url statusCode:(NSInteger)status length:(NSInteger)length {
  NSDictionary* headers = [NSDictionary dictionary];
  self = [super initWithURL:url statusCode:status HTTPVersion:@"HTTP/1.1" headerFields:headers];
  measuredLength = length;
  return self;
}

- (long long)expectedContentLength {
  return measuredLength;
}

@end

@interface URLDownload (OnTheListener)
- (void)responseArrived;
- (void)dataArrived;
- (void)transferEnded;
- (void)keepLoopWaiting;
@end

namespace {

constexpr time_t kLongestWaitSeconds = 2;
constexpr NSTimeInterval kCenturySeconds = 100.0 * 365 * 24 * 3600;

NSString* textFrom(const std::string& bytes) {
  NSString* text = [NSString stringWithUTF8String:bytes.c_str()];
  return text == nil ? @"" : text;
}

void post(DownloadJob& job, SEL message) {
  const AutoreleasePool pool;
  [job.download performSelector:message onThread:job.listener withObject:nil waitUntilDone:NO];
}

class Reporter : public quillory::platform::TransferObserver {
 public:
  explicit Reporter(DownloadJob& job) : job_(job) {}

  void responseArrived(const TransferResponse& response) override {
    job_.response = response;
    post(job_, @selector(responseArrived));
  }

  // A fast transfer brings many pieces before the listener takes the first message: one that waits
  // tells of all of them.
  void dataArrived(std::size_t length) override {
    job_.unreportedBytes += length;
    if (!job_.isReportPosted.exchange(true)) post(job_, @selector(dataArrived));
  }

 private:
  DownloadJob& job_;
};

void* carryOut(void* context) {
  // Writing to a connection that the server has closed must not end the launcher.
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);

  const AutoreleasePool pool;
  DownloadJob& job = *static_cast<DownloadJob*>(context);
  Reporter reporter(job);
  job.result = transfer(job.request, reporter);
  post(job, @selector(transferEnded));
  return nullptr;
}

NSURLResponse* responseFrom(const TransferResponse& response) {
  NSURL* url = [NSURL URLWithString:textFrom(response.url)];
  NSInteger length = static_cast<NSInteger>(response.expectedLength);
  if (response.status == 0) {
    return [[[NSURLResponse alloc] initWithURL:url
                                      MIMEType:nil
                         expectedContentLength:length
                              textEncodingName:nil] autorelease];
  }
  return [[[MeasuredResponse alloc] initWithURL:url statusCode:response.status
                                         length:length] autorelease];
}

NSError* errorFrom(const DownloadJob& job) {
  NSDictionary* info = [NSDictionary
      dictionaryWithObjectsAndKeys:textFrom(job.result.message), NSLocalizedDescriptionKey,
                                   textFrom(job.request.url), NSURLErrorFailingURLStringErrorKey,
                                   nil];
  return [NSError errorWithDomain:NSURLErrorDomain
                             code:static_cast<NSInteger>(job.result.error)
                         userInfo:info];
}

}  // namespace

@implementation URLDownload

- (id)initWithRequest:(NSURLRequest*)request delegate:(id)delegate {
  self = [super init];
  if (self == nil) return nil;
  NSString* url = [[request URL] absoluteString];
  if (url == nil) {
    [self release];
    return nil;
  }
  job = std::make_unique<DownloadJob>().release();
  job->download = self;
  job->delegate = [delegate retain];
  job->request.url = [url UTF8String];
  job->request.timeoutSeconds = [request timeoutInterval];
  return self;
}

- (void)dealloc {
  const std::unique_ptr<DownloadJob> owned(job);
  if (job != nullptr) {
    [job->delegate release];
    [job->listener release];
  }
  [super dealloc];
}

- (void)setDestination:(NSString*)path allowOverwrite:(BOOL)allowOverwrite {
  if (job->isStarted) return;
  job->isStarted = true;
  job->request.path = [path fileSystemRepresentation];
  job->listener = [[NSThread currentThread] retain];
  // A run loop that waits for nothing does not wait at all. The timer, as this thread, keeps the
  // object alive until the end.
  job->loopKeeper = [NSTimer scheduledTimerWithTimeInterval:kCenturySeconds
                                                     target:self
                                                   selector:@selector(keepLoopWaiting)
                                                   userInfo:nil
                                                    repeats:NO];
  if (!allowOverwrite && [[NSFileManager defaultManager] fileExistsAtPath:path]) {
    job->result = {TransferError::kCannotWrite, "The file exists."};
  } else if (pthread_create(&job->worker, nullptr, carryOut, job) == 0) {
    job->isWorking = true;
    return;
  } else {
    job->result = {TransferError::kUnknown, "No thread can be started."};
  }
  [self performSelector:@selector(transferEnded) withObject:nil afterDelay:0];
}

- (void)cancel {
  job->request.isCancelled = true;
  if (!job->isWorking) return;
  // So that nothing of it is left when this returns. But a name server that does not answer cannot
  // be interrupted.
  timespec end = {};
  clock_gettime(CLOCK_REALTIME, &end);
  end.tv_sec += kLongestWaitSeconds;
  if (pthread_timedjoin_np(job->worker, nullptr, &end) == 0) job->isWorking = false;
}

- (void)keepLoopWaiting {
}

- (void)responseArrived {
  if (!job->request.isCancelled)
    [job->delegate download:self didReceiveResponse:responseFrom(job->response)];
}

- (void)dataArrived {
  job->isReportPosted = false;
  const std::size_t length = job->unreportedBytes.exchange(0);
  if (length > 0 && !job->request.isCancelled)
    [job->delegate download:self didReceiveDataOfLength:length];
}

- (void)transferEnded {
  if (job->isWorking) pthread_join(job->worker, nullptr);
  [[self retain] autorelease];
  [job->loopKeeper invalidate];
  if (job->request.isCancelled) return;
  if (job->result.error == TransferError::kNone) {
    [job->delegate downloadDidFinish:self];
  } else {
    [job->delegate download:self didFailWithError:errorFrom(*job)];
  }
}

@end

namespace quillory::platform {

Class urlDownloadClass() { return [URLDownload class]; }

}  // namespace quillory::platform
