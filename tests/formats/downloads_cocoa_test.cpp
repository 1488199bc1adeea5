#include "formats/downloads_cocoa.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "formats/downloads.h"
#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/http_server.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using namespace testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// Bounds every test whose server falls silent; those that wait for it set a shorter one.
constexpr double kBoundSeconds = 5;
double timeoutSeconds = kBoundSeconds;

class DownloadFile : public ::testing::Test {
 protected:
  DownloadFile() {
    for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY",
                             "no_proxy", "NO_PROXY"})
      unsetenv(name);
    timeoutSeconds = kBoundSeconds;
  }

  /// Downloads to "file" in a folder of its own; what the platform's log got is in `log_`.
  void download(const std::string& url, const DownloadLimits& limits = {}) {
    ::testing::internal::CaptureStderr();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(downloadFile(url.c_str(), (folder_ / "file").c_str(), limits), 1);
    seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    log_ = ::testing::internal::GetCapturedStderr();
  }

  void expectContent(const std::string& content) const {
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
    EXPECT_EQ(readFile(folder_ / "file"), content);
    EXPECT_THAT(log_, HasSubstr("] downloadDidFinish\n"));
    EXPECT_THAT(log_, Not(HasSubstr("Download failed")));
  }

  /// Nothing at the destination and nothing beside it, and the log says what it was.
  void expectFailure(const std::string& reason) const {
    EXPECT_TRUE(names().empty()) << names().front();
    EXPECT_THAT(log_, HasSubstr("] Download failed! Error - " + reason));
    const std::string inWords = reason.substr(0, reason.find(" http:"));
    EXPECT_TRUE(launcherLog_.contains("[Download] Nothing came: " + inWords))
        << launcherLog_.text();
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.path()))
      names.push_back(entry.path().filename());
    return names;
  }

  HttpServer server_;
  TempDir folder_;
  std::string log_;
  CapturedLog launcherLog_;
  double seconds_ = 0;

 private:
  ScopedReplace<decltype(platformCalls.downloadFile)> transport_{
      platformCalls.downloadFile,
      +[](const char* url, const char* destPath, const DownloadLimits& limits) {
        return downloadThroughCocoa(url, destPath, limits, timeoutSeconds);
      }};
};

TEST_F(DownloadFile, FetchesAFile) {
  server_.answer("/version.txt", answerFile("1.8.0_202\n"));
  download(server_.url("/version.txt?time=5"));
  expectContent("1.8.0_202\n");
  EXPECT_THAT(server_.targets(), ElementsAre("/version.txt?time=5"));
}

TEST_F(DownloadFile, EndsAsSoonAsTheTransferDoes) {
  server_.answer("/file", answerFile("x"));
  // A turn of the loop that had to run out would take 0.2 seconds, every time.
  double fastest = 1;
  for (int i = 0; i < 50 && fastest >= 0.15; ++i) {
    download(server_.url("/file"));
    fastest = std::min(fastest, seconds_);
  }
  EXPECT_LT(fastest, 0.15);
}

TEST_F(DownloadFile, FetchesABigFileByteForByte) {
  std::string content;
  for (int i = 0; content.size() < 3'000'000; ++i) content += std::to_string(i) + ' ';
  server_.answer("/big", answerFile(content));
  download(server_.url("/big"));
  expectContent(content);
}

TEST_F(DownloadFile, StoresAnEmptyFile) {
  server_.answer("/empty", answerFile(""));
  download(server_.url("/empty"));
  expectContent("");
}

TEST_F(DownloadFile, ReplacesAnOlderFile) {
  writeFile(folder_ / "file", "a much longer content than the new one");
  server_.answer("/file", answerFile("new"));
  download(server_.url("/file"));
  expectContent("new");
}

TEST_F(DownloadFile, LeavesNoOlderFileWhenItFails) {
  writeFile(folder_ / "file", "old");
  download(server_.url("/missing"));
  expectFailure("");
}

TEST_F(DownloadFile, LogsTheStartAndTheDestination) {
  server_.answer("/file", answerFile("x"));
  download(server_.url("/file"));
  EXPECT_THAT(log_, HasSubstr("] Starting download from = " + server_.url("/file") + "\n"));
  EXPECT_THAT(log_, HasSubstr("] Set destination file to " + (folder_ / "file") + "\n"));
}

TEST_F(DownloadFile, LogsThePercentageOfAKnownLength) {
  server_.answer("/file", answerFile("12345678"));
  download(server_.url("/file"));
  EXPECT_THAT(log_, HasSubstr("] Percent complete - 100.000000\n"));
  EXPECT_THAT(log_, Not(HasSubstr("Bytes received")));
}

TEST_F(DownloadFile, LogsTheBytesOfAnUnknownLength) {
  server_.answer("/file", answerWithoutLength("12345678"));
  download(server_.url("/file"));
  expectContent("12345678");
  EXPECT_THAT(log_, HasSubstr("] Bytes received - 8\n"));
  EXPECT_THAT(log_, Not(HasSubstr("Percent complete")));
}

TEST_F(DownloadFile, JoinsChunks) {
  server_.answer("/file", answerChunked({"one ", "two ", "three"}));
  download(server_.url("/file"));
  expectContent("one two three");
  EXPECT_THAT(log_, HasSubstr("Bytes received"));
}

TEST_F(DownloadFile, StoresCompressedContentAsSent) {
  HttpAnswer answer = answerFile("\x1f\x8b not for us to unpack");
  answer.head.insert(answer.head.size() - 2, "Content-Encoding: gzip\r\n");
  server_.answer("/file", answer);
  download(server_.url("/file"));
  expectContent(answer.body);
}

TEST_F(DownloadFile, TakesAnHtmlPageWithAGoodStatusForTheFile) {
  HttpAnswer answer = answerFile("<html>Please log in to this hotel's network</html>");
  answer.head.insert(answer.head.size() - 2, "Content-Type: text/html\r\n");
  server_.answer("/file", answer);
  download(server_.url("/file"));
  expectContent(answer.body);
}

TEST_F(DownloadFile, NeverStoresAnErrorPage) {
  for (const int status : {400, 401, 403, 404, 410, 500, 502, 503}) {
    SCOPED_TRACE(status);
    server_.answer("/file", answerError(status));
    download(server_.url("/file"));
    expectFailure("nothing to keep, HTTP status " + std::to_string(status) + " " +
                  server_.url("/file"));
  }
}

TEST_F(DownloadFile, FollowsRelativeAndAbsoluteRedirects) {
  server_.answer("/a", answerRedirect("b/c"));
  server_.answer("/b/c", answerRedirect(server_.url("/d"), 301));
  server_.answer("/d", answerRedirect("/e", 307));
  server_.answer("/e", answerFile("found"));
  download(server_.url("/a"));
  expectContent("found");
  EXPECT_THAT(server_.targets(), ElementsAre("/a", "/b/c", "/d", "/e"));
}

TEST_F(DownloadFile, GivesUpARedirectLoop) {
  server_.answer("/loop", answerRedirect("/loop"));
  download(server_.url("/loop"));
  expectFailure("Maximum (20) redirects followed");
}

TEST_F(DownloadFile, FollowsNoRedirectOutOfTheWeb) {
  writeFile(folder_.path() / "elsewhere" / "secret", "precious");
  for (const std::string& target :
       {"file://" + (folder_ / "elsewhere/secret"), std::string("ftp://127.0.0.1/x"),
        std::string("gopher://127.0.0.1/x"), std::string("data:,x")}) {
    SCOPED_TRACE(target);
    server_.answer("/file", answerRedirect(target));
    download(server_.url("/file"));
    EXPECT_FALSE(fs::exists(folder_ / "file"));
    EXPECT_THAT(log_, HasSubstr("Download failed! Error - "));
  }
}

TEST_F(DownloadFile, TakesARedirectThatLeadsNowhereForAnError) {
  HttpAnswer answer = answerError(302);
  server_.answer("/file", answer);
  download(server_.url("/file"));
  expectFailure("nothing to keep, HTTP status 302");
}

TEST_F(DownloadFile, FailsWhenTheContentEndsEarly) {
  server_.answer("/file", answerWithLength("half", 8));
  download(server_.url("/file"));
  expectFailure("transfer closed with 4 bytes remaining to read " + server_.url("/file"));
}

TEST_F(DownloadFile, FailsWhenChunksEndEarly) {
  server_.answer("/file", answerChunked({"half"}, true));
  download(server_.url("/file"));
  expectFailure("");
}

TEST_F(DownloadFile, FailsWhenTheConnectionBreaks) {
  server_.answer("/file", answerReset("content that never comes whole", 10));
  download(server_.url("/file"));
  expectFailure("");
}

TEST_F(DownloadFile, FailsOnAnEmptyReply) {
  server_.answer("/file", answerNothing());
  download(server_.url("/file"));
  expectFailure("Empty reply from server");
}

TEST_F(DownloadFile, FailsOnAReplyThatIsNotHttp) {
  server_.answer("/file", {.head = "SSH-2.0-whatever\r\n", .body = "\r\n"});
  download(server_.url("/file"));
  expectFailure("");
}

TEST_F(DownloadFile, FailsAfterTheTimeWithoutAByte) {
  timeoutSeconds = 0.5;
  server_.answer("/silent", answerSilence());
  server_.answer("/stalled", answerStalled("content that never comes whole", 10));
  for (const char* path : {"/silent", "/stalled"}) {
    SCOPED_TRACE(path);
    download(server_.url(path));
    expectFailure("The request timed out. " + server_.url(path));
    EXPECT_GE(seconds_, 0.5);
    EXPECT_LT(seconds_, 3);
  }
}

// Within the silence that ends a transfer, again and again.
TEST_F(DownloadFile, FailsAfterItsTimeHoweverItDrips) {
  server_.answer("/drip", answerInPieces("1", 1000, std::chrono::milliseconds(50)));
  server_.answer("/silent", answerSilence());
  for (const char* path : {"/drip", "/silent"}) {
    SCOPED_TRACE(path);
    download(server_.url(path), {.totalSeconds = 0.7});
    expectFailure("not complete after 0.7 seconds");
    EXPECT_GE(seconds_, 0.7);
    EXPECT_LT(seconds_, 3);
  }
}

TEST_F(DownloadFile, FailsBeyondItsLengthHoweverLongItIs) {
  HttpAnswer endless = answerWithoutLength(std::string(1000, 'x'));
  endless.bodyCount = 10'000'000;
  server_.answer("/endless", endless);
  server_.answer("/long", answerFile("12345678"));
  for (const char* path : {"/endless", "/long"}) {
    SCOPED_TRACE(path);
    download(server_.url(path), {.maxBytes = 7});
    expectFailure("more than 7 bytes");
    EXPECT_LT(seconds_, 3);
  }
  download(server_.url("/long"), {.maxBytes = 8});
  expectContent("12345678");
}

TEST_F(DownloadFile, GoesOnAfterOneThatWasEnded) {
  server_.answer("/drip", answerInPieces("1", 1000, std::chrono::milliseconds(50)));
  server_.answer("/file", answerFile("content"));
  download(server_.url("/drip"), {.totalSeconds = 0.3});
  download(server_.url("/file"));
  expectContent("content");
}

TEST_F(DownloadFile, FailsWhenTheConnectionIsRefused) {
  download("http://127.0.0.1:" + std::to_string(unusedPort()) + "/file");
  expectFailure("Failed to connect to 127.0.0.1");
}

TEST_F(DownloadFile, FailsForAHostThatDoesNotExist) {
  download("http://nowhere.invalid/file");
  expectFailure("Could not resolve host");
}

TEST_F(DownloadFile, FailsAtOnceForAnAddressThatIsNone) {
  for (const char* url : {"",
                          "Quillory-GU-version.txt?time=1",
                          "no scheme",
                          "://",
                          ":",
                          "/",
                          "//",
                          "http",
                          "http:",
                          "http://",
                          "http:///path",
                          "http://?",
                          "ht tp://host/",
                          "http://a b/",
                          "http://[::1",
                          "http://host:99999/",
                          "http://host:port/",
                          "mailto:someone",
                          "ftp://127.0.0.1/",
                          "javascript:1",
                          "%",
                          "http://%zz/",
                          "\x01",
                          "http://\xff/"}) {
    SCOPED_TRACE(url);
    download(url);
    EXPECT_TRUE(names().empty());
    EXPECT_THAT(log_, HasSubstr("Download failed"));
    EXPECT_LT(seconds_, 1);
  }
}

TEST_F(DownloadFile, FailsWhereTheFolderDoesNotExist) {
  server_.answer("/file", answerFile("x"));
  ::testing::internal::CaptureStderr();
  downloadFile(server_.url("/file").c_str(), (folder_ / "missing/file").c_str());
  log_ = ::testing::internal::GetCapturedStderr();
  expectFailure("");
}

TEST_F(DownloadFile, TakesAddressAndPathBeyondAscii) {
  const std::string path = folder_ / "f\u00fcr alle \u65e5\u672c $HOME `x` \"y\"";
  server_.answer("/file", answerFile("x"));
  ::testing::internal::CaptureStderr();
  downloadFile(server_.url("/file").c_str(), path.c_str());
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(readFile(path), "x");
}

TEST_F(DownloadFile, FailsForAPathThatIsNotUtf8AndWritesNowhere) {
  server_.answer("/file", answerFile("x"));
  ::testing::internal::CaptureStderr();
  downloadFile(server_.url("/file").c_str(), (folder_ / "l\xe4tin").c_str());
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("Download failed"));
  EXPECT_TRUE(names().empty());
}

TEST_F(DownloadFile, FetchesFromAFileUrl) {
  const TempDir source;
  writeFile(source / "there", "local");
  download("file://" + (source / "there"));
  expectContent("local");
}

TEST_F(DownloadFile, FailsForAFileUrlThatLeadsNowhere) {
  download("file:///nonexistent/file");
  expectFailure("");
}

TEST_F(DownloadFile, GoesThroughTheProxyOfTheEnvironment) {
  server_.answer("/file", answerFile("through the proxy"));
  setenv("http_proxy", server_.url("").c_str(), 1);
  download("http://updates.invalid/file?x=1");
  unsetenv("http_proxy");
  expectContent("through the proxy");
  EXPECT_THAT(server_.targets(), ElementsAre("http://updates.invalid/file?x=1"));
}

TEST_F(DownloadFile, ReplacesALinkSomeonePutWhereItWrites) {
  writeFile(folder_.path() / "precious", "precious");
  fs::create_symlink(folder_ / "precious", partialDownloadPath(folder_ / "file"));
  server_.answer("/file", answerFile("new"));
  download(server_.url("/file"));
  EXPECT_EQ(readFile(folder_ / "precious"), "precious");
  EXPECT_EQ(readFile(folder_ / "file"), "new");
  EXPECT_FALSE(fs::is_symlink(folder_ / "file"));
}

TEST_F(DownloadFile, SucceedsAfterAFailure) {
  server_.answer("/file", answerReset("content that never comes whole", 10));
  download(server_.url("/file"));
  expectFailure("");
  server_.answer("/file", answerFile("whole"));
  download(server_.url("/file"));
  expectContent("whole");
}

TEST(DownloadTimeout, IsSixtySeconds) { EXPECT_EQ(kDownloadTimeoutSeconds, 60); }

TEST(DownloadThroughCocoa, FetchesWithoutATimeOfItsCaller) {
  const TempDir folder;
  HttpServer server;
  server.answer("/file", answerFile("content"));
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(downloadThroughCocoa(server.url("/file").c_str(), (folder / "file").c_str(), {}), 1);
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(readFile(folder / "file"), "content");
}

}  // namespace
}  // namespace quillory
