#include "update/curl_transport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "tests/harness/http_server.h"
#include "update/cancel.h"
#include "update/fetch.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using update::fetchText;
using update::makeCurlTransport;
using update::TextFetch;
using update::TransferEnd;
using update::TransferHead;
using update::TransferRequest;
using update::TransferResult;

constexpr std::size_t kMost = 100'000;

class CurlTransport : public ::testing::Test {
 protected:
  // Whatever this machine's proxies are.
  CurlTransport() {
    for (const char* const name : {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY"})
      unsetenv(name);
  }
  ~CurlTransport() override { update::isCancelled = false; }

  TextFetch get(const std::string& path, const std::string& ifNoneMatch = "") {
    return fetchText(*transport_, server_.url(path), kMost, ifNoneMatch);
  }

  HttpServer server_;
  std::unique_ptr<update::Transport> transport_ = makeCurlTransport(1.0);
};

TEST_F(CurlTransport, BringsABodyAndWhatTheServerCallsIt) {
  server_.answer("/list", {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nETag: \"5f\"\r\n"
                           "Connection: close\r\n\r\n",
                           "hello"});
  const TextFetch fetch = get("/list");
  EXPECT_EQ(fetch.result.end, TransferEnd::kComplete) << fetch.result.reason;
  EXPECT_EQ(fetch.result.status, 200);
  EXPECT_EQ(fetch.bytes, "hello");
  EXPECT_EQ(fetch.eTag, "\"5f\"");
  EXPECT_GT(fetch.result.bytesUp, 50);
  EXPECT_GT(fetch.result.bytesDown, 50);
  EXPECT_THAT(server_.requests().at(0).text, HasSubstr("User-Agent: quillory-update/1.0"));
}

TEST_F(CurlTransport, AsksForWhatHasChangedOnly) {
  server_.answer("/list", {"HTTP/1.1 304 Not Modified\r\nETag: \"5f\"\r\n\r\n", ""});
  const TextFetch fetch = get("/list", "\"5f\"");
  EXPECT_EQ(fetch.result.end, TransferEnd::kComplete) << fetch.result.reason;
  EXPECT_EQ(fetch.result.status, 304);
  EXPECT_THAT(server_.requests().at(0).text, HasSubstr("If-None-Match: \"5f\""));
}

// Notes what comes.
class NotingSink : public update::TransferSink {
 public:
  bool begin(const TransferHead& given) override {
    head = given;
    return takes;
  }
  bool take(const char* bytes, std::size_t size) override {
    body.append(bytes, size);
    return true;
  }
  TransferHead head;
  std::string body;
  bool takes = true;
};

TEST_F(CurlTransport, AsksForAPart) {
  server_.answer("/file", {"HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 7-9/10\r\n"
                           "Content-Length: 3\r\nConnection: close\r\n\r\n",
                           "hij"});
  NotingSink sink;
  const TransferResult result = transport_->get(
      {.url = server_.url("/file"), .from = 7, .ifRange = "\"5f\"", .mostBytes = 100}, sink);
  EXPECT_EQ(result.end, TransferEnd::kComplete) << result.reason;
  EXPECT_EQ(sink.head.status, 206);
  EXPECT_EQ(sink.head.from, 7);
  EXPECT_EQ(sink.head.length, 3);
  EXPECT_EQ(sink.body, "hij");
  EXPECT_THAT(server_.requests().at(0).text, HasSubstr("Range: bytes=7-\r\n"));
  EXPECT_THAT(server_.requests().at(0).text, HasSubstr("If-Range: \"5f\"\r\n"));
}

TEST_F(CurlTransport, GivesThePageOfAnErrorToNobody) {
  server_.answer("/gone", answerError(404));
  const TextFetch fetch = get("/gone");
  EXPECT_EQ(fetch.result.end, TransferEnd::kComplete);
  EXPECT_EQ(fetch.result.status, 404);
  EXPECT_EQ(fetch.bytes, "");
}

TEST_F(CurlTransport, EndsABodyThatIsTooLong) {
  server_.answer("/long", answerInPieces(std::string(10000, 'x'), 100000));
  const TextFetch fetch = get("/long");
  EXPECT_EQ(fetch.result.end, TransferEnd::kTooLong);
  EXPECT_LE(fetch.bytes.size(), kMost);
}

TEST_F(CurlTransport, EndsAPageOfAnErrorThatIsTooLong) {
  HttpAnswer endless = answerInPieces(std::string(10000, 'x'), 100000);
  endless.head.replace(endless.head.find("200"), 3, "404");
  server_.answer("/long", endless);
  EXPECT_EQ(get("/long").result.end, TransferEnd::kTooLong);
}

TEST_F(CurlTransport, TellsABrokenTransferFromACompleteOne) {
  server_.answer("/cut", answerReset("hello, world", 5));
  const TextFetch fetch = get("/cut");
  EXPECT_EQ(fetch.result.end, TransferEnd::kBroken);
  EXPECT_EQ(fetch.bytes, "hello");
  server_.answer("/nothing", answerNothing());
  EXPECT_EQ(get("/nothing").result.end, TransferEnd::kBroken);
}

TEST_F(CurlTransport, EndsWhereNothingComes) {
  server_.answer("/silent", answerStalled("hello, world", 5));
  const TextFetch fetch = get("/silent");
  EXPECT_EQ(fetch.result.end, TransferEnd::kBroken);
  EXPECT_EQ(fetch.result.reason, "the server has been silent for too long");
}

TEST_F(CurlTransport, WaitsAsLongAsSomethingComes) {
  server_.answer("/slow", answerSlowly("hello, world", 6, std::chrono::milliseconds(300)));
  EXPECT_EQ(get("/slow").bytes, "hello, world");
}

TEST_F(CurlTransport, FollowsARedirect) {
  server_.answer("/old", answerRedirect("/new"));
  server_.answer("/new", answerFile("hello"));
  EXPECT_EQ(get("/old").bytes, "hello");
}

TEST_F(CurlTransport, FollowsNoRedirectToAnotherScheme) {
  for (const std::string target : {"file:///etc/passwd", "ftp://one.test/", "gopher://one.test/"}) {
    server_.answer("/old", answerRedirect(target));
    const TextFetch fetch = get("/old");
    EXPECT_EQ(fetch.result.end, TransferEnd::kRefused) << target;
    EXPECT_EQ(fetch.result.reason, "a redirect to " + target + " is not followed");
  }
}

TEST_F(CurlTransport, FollowsNoRedirectWithoutAnEnd) {
  server_.answer("/round", answerRedirect("/round"));
  const TextFetch fetch = get("/round");
  EXPECT_EQ(fetch.result.end, TransferEnd::kRefused);
  EXPECT_EQ(fetch.result.reason, "too many redirects");
  EXPECT_EQ(server_.requests().size(), 21u);
}

TEST_F(CurlTransport, AsksNobodyButTheWeb) {
  for (const std::string url :
       {"file:///etc/hostname", "ftp://one.test/x", "one.test/x", "http:///x", "https://", ""}) {
    const TextFetch fetch = fetchText(*transport_, url, kMost, "");
    EXPECT_EQ(fetch.result.end, TransferEnd::kRefused) << url;
    EXPECT_EQ(fetch.bytes, "");
  }
}

TEST_F(CurlTransport, SaysThatNobodyIsThere) {
  const std::string url = "http://127.0.0.1:" + std::to_string(unusedPort()) + "/x";
  EXPECT_EQ(fetchText(*transport_, url, kMost, "").result.end, TransferEnd::kUnreachable);
  EXPECT_EQ(fetchText(*transport_, "http://no.invalid/x", kMost, "").result.end,
            TransferEnd::kUnreachable);
}

TEST_F(CurlTransport, TakesTheProxyOfTheEnvironment) {
  setenv("http_proxy", server_.url("").c_str(), 1);
  server_.answer("/x", answerFile("by proxy"));
  const TextFetch fetch = fetchText(*transport_, "http://no.invalid/x", kMost, "");
  unsetenv("http_proxy");
  EXPECT_EQ(server_.targets().at(0), "http://no.invalid/x");
  EXPECT_EQ(fetch.bytes, "by proxy");
}

TEST_F(CurlTransport, GoesAroundTheProxyForWhomTheEnvironmentNames) {
  setenv("http_proxy", "http://127.0.0.1:1/", 1);
  setenv("no_proxy", "example.com,127.0.0.1", 1);
  server_.answer("/x", answerFile("at once"));
  const TextFetch fetch = fetchText(*transport_, server_.url("/x"), kMost, "");
  unsetenv("http_proxy");
  unsetenv("no_proxy");
  EXPECT_EQ(fetch.bytes, "at once");
}

TEST_F(CurlTransport, EndsWhenItIsCancelled) {
  server_.answer("/silent", answerSilence());
  transport_ = makeCurlTransport(60);
  std::thread canceller([this] {
    while (server_.requests().empty()) std::this_thread::yield();
    update::isCancelled = true;
  });
  EXPECT_EQ(get("/silent").result.end, TransferEnd::kCancelled);
  canceller.join();
}

TEST_F(CurlTransport, EndsWhereTheSinkTakesNothing) {
  server_.answer("/file", answerFile("hello"));
  NotingSink sink;
  sink.takes = false;
  EXPECT_EQ(transport_->get({.url = server_.url("/file"), .mostBytes = 100}, sink).end,
            TransferEnd::kNotTaken);
  EXPECT_EQ(sink.body, "");
}

}  // namespace
}  // namespace quillory::testing
