#include "packager/commands/web_probe.h"

#include <gtest/gtest.h>

#include "tests/harness/http_server.h"

namespace quillory::pack {
namespace {

using testing::HttpServer;

TEST(AskServer, HasTheStatusTheHeadersAndTheBody) {
  HttpServer server;
  server.answer("/file", {.head = "HTTP/1.1 206 Partial Content\r\nETag: \"x\"\r\n"
                                  "Content-Length: 4\r\ncontent-range: bytes 0-3/9\r\n\r\n",
                          .body = "abcd"});
  const WebAnswer answer = askServer(server.url("/file"), {"Range: bytes=0-3"}, 100);
  EXPECT_EQ(answer.status, 206);
  EXPECT_EQ(answer.header("etag"), "\"x\"");
  EXPECT_EQ(answer.header("content-range"), "bytes 0-3/9");
  EXPECT_EQ(answer.header("cache-control"), "");
  EXPECT_EQ(answer.body, "abcd");
  EXPECT_NE(server.requests().at(0).text.find("Range: bytes=0-3"), std::string::npos);
}

TEST(AskServer, TakesNoMoreThanItWasAskedFor) {
  HttpServer server;
  server.answer("/file", testing::answerFile(std::string(100'000, 'x')));
  const WebAnswer answer = askServer(server.url("/file"), {}, 10);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "xxxxxxxxxx");
}

TEST(AskServer, HasTheHeadersOfTheAnswerThatARedirectLeadsTo) {
  HttpServer server;
  server.answer("/file", testing::answerRedirect(server.url("/other")));
  server.answer("/other", testing::answerFile("x"));
  const WebAnswer answer = askServer(server.url("/file"), {}, 10);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.header("location"), "");
}

TEST(AskServer, SaysWhyThereIsNoAnswer) {
  const int port = testing::unusedPort();
  const WebAnswer answer = askServer("http://127.0.0.1:" + std::to_string(port) + "/", {}, 10);
  EXPECT_EQ(answer.status, 0);
  EXPECT_NE(answer.reason, "");
}

}  // namespace
}  // namespace quillory::pack
