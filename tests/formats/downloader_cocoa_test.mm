// The delegate by itself: what Cocoa may call, and what it answers.
#import "formats/downloader_cocoa.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "formats/downloads.h"
#include "formats/downloads_cocoa.h"
#include "platform/autorelease_pool.h"
#include "tests/harness/temp_dir.h"
#import "url_download.h"

namespace quillory {
namespace {

using ::testing::HasSubstr;

NSURLResponse* responseOfLength(NSInteger length) {
  return [[[NSURLResponse alloc] initWithURL:[NSURL URLWithString:@"http://host/file"]
                                    MIMEType:nil
                       expectedContentLength:length
                            textEncodingName:nil] autorelease];
}

class DownloaderTest : public ::testing::Test {
 protected:
  ~DownloaderTest() override { [downloader_ release]; }

  std::string logOfData(NSUInteger length) {
    ::testing::internal::CaptureStderr();
    [downloader_ download:nil didReceiveDataOfLength:length];
    return ::testing::internal::GetCapturedStderr();
  }

  AutoreleasePool pool_;
  Downloader* downloader_ = [[Downloader alloc] init];
};

TEST_F(DownloaderTest, BeginsWithNothing) {
  EXPECT_FALSE([downloader_ isDone]);
  EXPECT_FALSE([downloader_ isTransferring]);
  EXPECT_TRUE([downloader_ downloadResponse] == nil);
  EXPECT_EQ([downloader_ bytesReceived], 0);
}

TEST_F(DownloaderTest, KeepsTheLastResponseAndReleasesTheOneBefore) {
  NSURLResponse* first = [[NSURLResponse alloc] init];
  NSURLResponse* second = [[NSURLResponse alloc] init];
  [downloader_ setDownloadResponse:first];
  EXPECT_EQ([first retainCount], 2U);
  [downloader_ setDownloadResponse:first];
  EXPECT_EQ([first retainCount], 2U);
  [downloader_ setDownloadResponse:second];
  EXPECT_EQ([first retainCount], 1U);
  EXPECT_TRUE([downloader_ downloadResponse] == second);
  [first release];
  [second release];
}

TEST_F(DownloaderTest, CountsBytesFromTheResponseOn) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(NSURLResponseUnknownLength)];
  logOfData(10);
  logOfData(5);
  EXPECT_EQ([downloader_ bytesReceived], 15);
  [downloader_ download:nil didReceiveResponse:responseOfLength(7)];
  EXPECT_EQ([downloader_ bytesReceived], 0);
}

TEST_F(DownloaderTest, LogsBytesWhenTheLengthIsUnknown) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(NSURLResponseUnknownLength)];
  EXPECT_THAT(logOfData(10), HasSubstr("] Bytes received - 10\n"));
  EXPECT_THAT(logOfData(5), HasSubstr("] Bytes received - 15\n"));
}

TEST_F(DownloaderTest, LogsThePercentageInSinglePrecision) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(3)];
  EXPECT_THAT(logOfData(1), HasSubstr("] Percent complete - 33.333336\n"));
  EXPECT_THAT(logOfData(1), HasSubstr("] Percent complete - 66.666672\n"));
  EXPECT_THAT(logOfData(1), HasSubstr("] Percent complete - 100.000000\n"));
}

TEST_F(DownloaderTest, CapsThePercentage) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(3)];
  EXPECT_THAT(logOfData(4), HasSubstr("] Percent complete - 100.000000\n"));
}

TEST_F(DownloaderTest, CountsInThirtyTwoBits) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(NSURLResponseUnknownLength)];
  logOfData(2147483647);
  EXPECT_THAT(logOfData(1), HasSubstr("] Bytes received - -2147483648\n"));
}

TEST_F(DownloaderTest, KnowsLengthsBeyondThirtyTwoBits) {
  [downloader_ download:nil didReceiveResponse:responseOfLength(6442450944)];
  EXPECT_THAT(logOfData(1610612736), HasSubstr("] Percent complete - 25.000000\n"));
}

TEST_F(DownloaderTest, IsDoneAfterAFailureAndLogsReasonAndAddress) {
  NSDictionary* info = [NSDictionary
      dictionaryWithObjectsAndKeys:@"The reason.", NSLocalizedDescriptionKey, @"http://host/file",
                                   NSURLErrorFailingURLStringErrorKey, nil];
  NSError* error = [NSError errorWithDomain:NSURLErrorDomain code:-1 userInfo:info];
  ::testing::internal::CaptureStderr();
  [downloader_ download:nil didFailWithError:error];
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              HasSubstr("] Download failed! Error - The reason. http://host/file\n"));
  EXPECT_TRUE([downloader_ isDone]);
}

TEST_F(DownloaderTest, IsNotDoneWhenTheDownloadCannotBeMade) {
  ::testing::internal::CaptureStderr();
  [downloader_ startDownloadingURL:nil fromURL:@"http://[" toFile:@"/nonexistent/file"];
  const std::string log = ::testing::internal::GetCapturedStderr();
  EXPECT_THAT(log, HasSubstr("] Starting download from = http://[\n"));
  EXPECT_THAT(log, HasSubstr("] Download failed\n"));
  EXPECT_FALSE([downloader_ isDone]);
  EXPECT_FALSE([downloader_ isTransferring]);
}

// What Cocoa asks before it follows a redirect; libcurl is told beforehand.
TEST_F(DownloaderTest, FollowsRedirectsThatMayBeFollowed) {
  const auto request = [](NSString* url) {
    return [NSURLRequest requestWithURL:[NSURL URLWithString:url]];
  };
  NSURLResponse* secure =
      [[[NSURLResponse alloc] initWithURL:[NSURL URLWithString:@"https://host/file"]
                                 MIMEType:nil
                    expectedContentLength:0
                         textEncodingName:nil] autorelease];
  NSURLRequest* better = request(@"https://host/other");
  NSURLRequest* worse = request(@"http://host/other");
  const auto answer = [&](NSURLRequest* next, NSURLResponse* response) {
    return [downloader_ download:nil willSendRequest:next redirectResponse:response];
  };
  EXPECT_TRUE(answer(better, secure) == better);
  EXPECT_TRUE(answer(worse, secure) == nil);
  EXPECT_TRUE(answer(worse, responseOfLength(0)) == worse);
  EXPECT_TRUE(answer(request(@"file:///etc/hostname"), responseOfLength(0)) == nil);
  EXPECT_TRUE(answer(worse, nil) == worse) << "no redirect";
}

// Another body for a method, until the end of the scope.
class ScopedMethod {
 public:
  ScopedMethod(Class owner, SEL selector, IMP body)
      : method_(class_getInstanceMethod(owner, selector)),
        original(method_setImplementation(method_, body)) {}
  ~ScopedMethod() { method_setImplementation(method_, original); }

 private:
  Method method_;

 public:
  const IMP original;
};

NSURLRequestCachePolicy askedPolicy;
NSTimeInterval askedTimeout;

id noDownload(id self, SEL, NSURLRequest* request, id) {
  askedPolicy = [request cachePolicy];
  askedTimeout = [request timeoutInterval];
  [self release];
  return nil;
}

TEST_F(DownloaderTest, LeavesItToTheProtocolWhatACacheMayAnswer) {
  const ScopedMethod none([URLDownload class], @selector(initWithRequest:delegate:),
                          reinterpret_cast<IMP>(noDownload));
  askedPolicy = NSURLRequestReloadIgnoringCacheData;
  ::testing::internal::CaptureStderr();
  [downloader_ startDownloadingURL:nil fromURL:@"http://host/file" toFile:@"/nonexistent/file"];
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(askedPolicy, NSURLRequestUseProtocolCachePolicy);
  EXPECT_EQ(askedTimeout, 60);
}

using Turn = BOOL (*)(id, SEL, NSString*, NSDate*);
IMP originalTurn;
NSTimeInterval longestTurn;
int turns;

BOOL recordedTurn(id self, SEL selector, NSString* mode, NSDate* end) {
  longestTurn = std::max(longestTurn, [end timeIntervalSinceNow]);
  ++turns;
  return reinterpret_cast<Turn>(reinterpret_cast<void (*)()>(originalTurn))(self, selector, mode,
                                                                            end);
}

TEST(DownloadThroughCocoa, TurnsItsLoopForAFifthOfASecondAtATime) {
  const AutoreleasePool pool;
  const testing::TempDir folder;
  testing::writeFile(folder / "source", "content");
  longestTurn = 0;
  turns = 0;
  {
    const ScopedMethod recorded([NSRunLoop class], @selector(runMode:beforeDate:),
                                reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(recordedTurn)));
    originalTurn = recorded.original;
    ::testing::internal::CaptureStderr();
    downloadThroughCocoa(("file://" + (folder / "source")).c_str(), (folder / "file").c_str(), {});
    ::testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(testing::readFile(folder / "file"), "content");
  EXPECT_GT(turns, 0);
  EXPECT_LT(longestTurn, 0.201);
  EXPECT_GT(longestTurn, 0.15);
}

TEST_F(DownloaderTest, IsDoneOnceTheRunLoopHasTurnedToTheEnd) {
  const testing::TempDir folder;
  testing::writeFile(folder / "source", "content");
  NSString* url = [NSString stringWithFormat:@"file://%s", (folder / "source").c_str()];
  NSString* path = [NSString stringWithUTF8String:(folder / "file").c_str()];
  ::testing::internal::CaptureStderr();
  [downloader_ startDownloadingURL:nil fromURL:url toFile:path];
  EXPECT_FALSE([downloader_ isDone]);
  EXPECT_TRUE([downloader_ isTransferring]);
  for (int i = 0; i < 100 && ![downloader_ isDone]; ++i) {
    NSDate* soon = [NSDate dateWithTimeIntervalSinceNow:0.05];
    [[NSRunLoop currentRunLoop] runUntilDate:soon];
  }
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("] downloadDidFinish\n"));
  EXPECT_TRUE([downloader_ isDone]);
  EXPECT_FALSE([downloader_ isTransferring]);
  EXPECT_EQ(testing::readFile(folder / "file"), "content");
}

}  // namespace
}  // namespace quillory
