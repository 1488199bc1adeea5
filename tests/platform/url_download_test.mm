// The stand-in for NSURLDownload, as its delegate sees it.
#import "url_download.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/autorelease_pool.h"
#include "tests/harness/http_server.h"
#include "tests/harness/temp_dir.h"

namespace fs = std::filesystem;
using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

@interface RecordingDelegate : NSObject {
 @public
  std::vector<std::string>* messages;
  NSURLResponse* lastResponse;
  unsigned long bytes;
  NSInteger errorCode;
  BOOL isOnListener;
  NSThread* listener;
}
- (void)note:(const char*)message;
@end

@implementation RecordingDelegate

- (void)note:(const char*)message {
  if (messages->empty() || messages->back() != message) messages->push_back(message);
  if ([NSThread currentThread] != listener) isOnListener = NO;
}

- (void)download:(NSURLDownload*)download didReceiveResponse:(NSURLResponse*)response {
  [self note:"response"];
  lastResponse = [response retain];
}

- (void)download:(NSURLDownload*)download didReceiveDataOfLength:(NSUInteger)length {
  [self note:"data"];
  bytes += length;
}

- (void)downloadDidFinish:(NSURLDownload*)download {
  [self note:"finish"];
}

- (void)download:(NSURLDownload*)download didFailWithError:(NSError*)error {
  [self note:"fail"];
  errorCode = [error code];
}

@end

namespace {

class URLDownloadTest : public ::testing::Test {
 protected:
  URLDownloadTest() {
    delegate_->messages = &messages_;
    delegate_->isOnListener = YES;
    delegate_->listener = [NSThread currentThread];
  }
  ~URLDownloadTest() override {
    [delegate_->lastResponse release];
    [delegate_ release];
  }

  URLDownload* start(const std::string& url, double timeout = 5, BOOL allowOverwrite = YES) {
    NSURL* address = [NSURL URLWithString:[NSString stringWithUTF8String:url.c_str()]];
    NSURLRequest* request = [NSURLRequest requestWithURL:address
                                             cachePolicy:NSURLRequestUseProtocolCachePolicy
                                         timeoutInterval:timeout];
    URLDownload* download = [[URLDownload alloc] initWithRequest:request delegate:delegate_];
    [download setDestination:[NSString stringWithUTF8String:(folder_ / "file").c_str()]
              allowOverwrite:allowOverwrite];
    return [download autorelease];
  }

  void turnLoopUntil(const std::string& message) {
    // Not a number of turns: the slower the machine, the more of them are for a piece of the file.
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while ((messages_.empty() || messages_.back() != message) &&
           std::chrono::steady_clock::now() < end)
      turnLoop(0.05);
  }

  void turnLoop(double seconds) {
    const quillory::AutoreleasePool pool;
    NSDate* end = [NSDate dateWithTimeIntervalSinceNow:seconds];
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:end];
  }

  quillory::AutoreleasePool pool_;
  HttpServer server_;
  TempDir folder_;
  std::vector<std::string> messages_;
  RecordingDelegate* delegate_ = [[RecordingDelegate alloc] init];
};

TEST_F(URLDownloadTest, SendsItsMessagesInOrderOnTheThreadThatAsked) {
  server_.answer("/file", answerInPieces(std::string(100'000, 'x'), 50));
  start(server_.url("/file"));
  EXPECT_THAT(messages_, IsEmpty());
  turnLoopUntil("finish");
  EXPECT_THAT(messages_, ElementsAre("response", "data", "finish"));
  EXPECT_EQ(delegate_->bytes, 5'000'000U);
  EXPECT_TRUE(delegate_->isOnListener);
}

TEST_F(URLDownloadTest, SendsNothingWhileTheLoopStandsStill) {
  server_.answer("/file", answerFile("content"));
  start(server_.url("/file"));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_THAT(messages_, IsEmpty());
  turnLoopUntil("finish");
  EXPECT_THAT(messages_, ElementsAre("response", "data", "finish"));
}

TEST_F(URLDownloadTest, WorksOnAThreadOfTheProgramsOwn) {
  server_.answer("/file", answerFile("content"));
  std::thread other([this] {
    const quillory::AutoreleasePool pool;
    delegate_->listener = [NSThread currentThread];
    start(server_.url("/file"));
    turnLoopUntil("finish");
  });
  other.join();
  EXPECT_THAT(messages_, ElementsAre("response", "data", "finish"));
  EXPECT_TRUE(delegate_->isOnListener);
}

TEST_F(URLDownloadTest, ReportsStatusLengthAndAddressOfTheResponse) {
  server_.answer("/file", answerError(404));
  start(server_.url("/file"));
  turnLoopUntil("finish");
  ASSERT_TRUE([delegate_->lastResponse isKindOfClass:[NSHTTPURLResponse class]]);
  EXPECT_EQ([static_cast<NSHTTPURLResponse*>(delegate_->lastResponse) statusCode], 404);
  EXPECT_EQ([delegate_->lastResponse expectedContentLength], 36);
  NSURL* url = [delegate_->lastResponse URL];
  EXPECT_STREQ([[url absoluteString] UTF8String], server_.url("/file").c_str());
}

TEST_F(URLDownloadTest, ReportsLengthsBeyondThirtyTwoBits) {
  server_.answer("/file", answerWithLength("a beginning", 6'442'450'944));
  start(server_.url("/file"));
  turnLoopUntil("fail");
  EXPECT_EQ([delegate_->lastResponse expectedContentLength], 6'442'450'944);
}

TEST_F(URLDownloadTest, ReportsAFailureWithCocoasCode) {
  server_.answer("/file", answerSilence());
  start(server_.url("/file"), 0.3);
  turnLoopUntil("fail");
  EXPECT_THAT(messages_, ElementsAre("fail"));
  EXPECT_EQ(delegate_->errorCode, NSURLErrorTimedOut);
  EXPECT_FALSE(fs::exists(folder_ / "file"));
}

TEST_F(URLDownloadTest, IsNilForARequestWithoutAUrl) {
  NSURLRequest* request = [NSURLRequest requestWithURL:[NSURL URLWithString:@"http://["]];
  EXPECT_TRUE([[URLDownload alloc] initWithRequest:request delegate:delegate_] == nil);
}

TEST_F(URLDownloadTest, OverwritesOnlyWhenAllowed) {
  server_.answer("/file", answerFile("new"));
  writeFile(folder_ / "file", "old");
  start(server_.url("/file"), 5, NO);
  turnLoopUntil("fail");
  EXPECT_THAT(messages_, ElementsAre("fail"));
  EXPECT_EQ(readFile(folder_ / "file"), "old");
  start(server_.url("/file"), 5, YES);
  turnLoopUntil("finish");
  EXPECT_EQ(readFile(folder_ / "file"), "new");
}

TEST_F(URLDownloadTest, SendsNothingMoreOnceCancelled) {
  server_.answer("/file", answerStalled("content that never comes whole", 10));
  URLDownload* download = start(server_.url("/file"), 60);
  turnLoopUntil("data");
  EXPECT_TRUE(fs::exists(folder_ / "file"));
  [download cancel];
  EXPECT_FALSE(fs::exists(folder_ / "file")) << "it ended before cancel returned";
  messages_.clear();
  turnLoop(0.1);
  EXPECT_FALSE(fs::exists(folder_ / "file"));
  EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(URLDownloadTest, LetsGoOfTheDelegateAtTheEnd) {
  server_.answer("/file", answerFile("content"));
  {
    const quillory::AutoreleasePool pool;
    start(server_.url("/file"));
    EXPECT_EQ([delegate_ retainCount], 2U);
    turnLoopUntil("finish");
  }
  EXPECT_EQ([delegate_ retainCount], 1U);
}

/// Whether a thread of this process blocks SIGPIPE and nothing else (one that is only just being
/// started blocks everything).
bool hasThreadWithoutBrokenPipes() {
  for (const auto& task : fs::directory_iterator("/proc/self/task")) {
    std::ifstream status(task.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("SigBlk:", 0) != 0) continue;
      const unsigned long long blocked = std::stoull(line.substr(7), nullptr, 16);
      if (blocked == 1ULL << (SIGPIPE - 1)) return true;
    }
  }
  return false;
}

TEST_F(URLDownloadTest, BlocksBrokenPipeSignalsWhereItWritesToSockets) {
  server_.answer("/file", answerStalled("content that never comes whole", 10));
  EXPECT_FALSE(hasThreadWithoutBrokenPipes());
  URLDownload* download = start(server_.url("/file"), 60);
  turnLoopUntil("data");
  EXPECT_TRUE(hasThreadWithoutBrokenPipes());
  [download cancel];
  for (int i = 0; i < 100 && fs::exists(folder_ / "file"); ++i) turnLoop(0.05);
  turnLoop(0.1);
}

}  // namespace
