#include "platform/gnustep/curl_transfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/http_server.h"
#include "tests/harness/temp_dir.h"

namespace quillory::platform {
namespace {

namespace fs = std::filesystem;
using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class Recorder : public TransferObserver {
 public:
  void responseArrived(const TransferResponse& response) override {
    EXPECT_EQ(bytes, 0U);
    responses.push_back(response);
  }
  void dataArrived(std::size_t length) override { bytes += length; }

  std::vector<TransferResponse> responses;
  std::size_t bytes = 0;
};

class Transfer : public ::testing::Test {
 protected:
  Transfer() {
    request_.path = folder_ / "file";
    request_.timeoutSeconds = 5;
  }

  TransferResult run(const std::string& url) {
    request_.url = url;
    return transfer(request_, recorder_);
  }

  HttpServer server_;
  TempDir folder_;
  Recorder recorder_;
  TransferRequest request_;
};

TEST_F(Transfer, TellsResponseAndLengthOfTheContent) {
  server_.answer("/a", answerRedirect("/file"));
  server_.answer("/file", answerFile("content"));
  const TransferResult result = run(server_.url("/a"));
  EXPECT_EQ(result.error, TransferError::kNone);
  EXPECT_EQ(result.message, "");
  ASSERT_THAT(recorder_.responses, SizeIs(1));
  EXPECT_EQ(recorder_.responses[0].status, 200);
  EXPECT_EQ(recorder_.responses[0].expectedLength, 7);
  EXPECT_EQ(recorder_.responses[0].url, server_.url("/file"));
  EXPECT_EQ(recorder_.bytes, 7U);
  EXPECT_EQ(readFile(folder_ / "file"), "content");
}

TEST_F(Transfer, TellsTheResponseOfAnEmptyContent) {
  server_.answer("/file", answerFile(""));
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kNone);
  ASSERT_THAT(recorder_.responses, SizeIs(1));
  EXPECT_EQ(recorder_.responses[0].expectedLength, 0);
  EXPECT_EQ(readFile(folder_ / "file"), "");
}

TEST_F(Transfer, KeepsTheContentOfAnErrorAndItsStatus) {
  server_.answer("/file", answerError(503));
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kNone);
  EXPECT_EQ(recorder_.responses.at(0).status, 503);
  EXPECT_THAT(readFile(folder_ / "file"), HasSubstr("Error 503"));
}

TEST_F(Transfer, KnowsNoLengthWithoutAHeader) {
  server_.answer("/file", answerWithoutLength("content"));
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kNone);
  EXPECT_EQ(recorder_.responses.at(0).expectedLength, -1);
}

TEST_F(Transfer, HasNoStatusForAFileUrl) {
  writeFile(folder_ / "source", "content");
  EXPECT_EQ(run("file://" + (folder_ / "source")).error, TransferError::kNone);
  EXPECT_EQ(recorder_.responses.at(0).status, 0);
}

TEST_F(Transfer, NamesEachFailureAsCocoaDoes) {
  server_.answer("/cut", answerWithLength("half", 8));
  server_.answer("/nothing", answerNothing());
  server_.answer("/loop", answerRedirect("/loop"));
  const struct {
    std::string url;
    TransferError error;
  } kCases[] = {
      {"no scheme", TransferError::kUnsupportedUrl},
      {"ftp://127.0.0.1/", TransferError::kUnsupportedUrl},
      {"http://127.0.0.1:99999/", TransferError::kBadUrl},
      {"http://nowhere.invalid/", TransferError::kCannotFindHost},
      {"http://127.0.0.1:" + std::to_string(unusedPort()), TransferError::kCannotConnect},
      {server_.url("/cut"), TransferError::kConnectionLost},
      {server_.url("/nothing"), TransferError::kConnectionLost},
      {server_.url("/loop"), TransferError::kTooManyRedirects},
      {"file:///nonexistent/file", TransferError::kFileDoesNotExist},
  };
  for (const auto& [url, error] : kCases) {
    SCOPED_TRACE(url);
    const TransferResult result = run(url);
    EXPECT_EQ(result.error, error);
    EXPECT_NE(result.message, "");
    EXPECT_FALSE(fs::exists(folder_ / "file"));
  }
}

TEST_F(Transfer, FailsWhereNothingCanBeWritten) {
  server_.answer("/file", answerFile("content"));
  server_.answer("/empty", answerFile(""));
  request_.path = folder_ / "missing/file";
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kCannotWrite);
  EXPECT_EQ(run(server_.url("/empty")).error, TransferError::kCannotWrite);
}

TEST_F(Transfer, LeavesNoFileWhenThereIsNoRoomForAllOfIt) {
  server_.answer("/file", answerFile(std::string(1 << 20, 'x')));
  const FileSizeLimit limit(100'000);
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kCannotWrite);
  EXPECT_FALSE(fs::exists(folder_ / "file"));
}

TEST_F(Transfer, EndsSoonAfterItWasCancelled) {
  server_.answer("/file", answerStalled("content that never comes whole", 10));
  request_.timeoutSeconds = 60;
  std::thread canceller([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    request_.isCancelled = true;
  });
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kCancelled);
  canceller.join();
  EXPECT_FALSE(fs::exists(folder_ / "file"));
}

TEST_F(Transfer, RunsOnWhileBytesTrickle) {
  // Slower than the limit as a whole, but never silent for so long.
  server_.answer("/file", answerInPieces("x", 12, std::chrono::milliseconds(200)));
  request_.timeoutSeconds = 1;
  EXPECT_EQ(run(server_.url("/file")).error, TransferError::kNone);
  EXPECT_EQ(readFile(folder_ / "file"), std::string(12, 'x'));
}

// A web server over TLS, with a certificate that only those trust who are told to.
class SecureTransfer : public Transfer {
 protected:
  SecureTransfer() {
    writeFile(folder_ / "web/file", "secret content");
    const ChildResult made = runChild(
        {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
         "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
         "-keyout", folder_ / "key.pem", "-out", certificate()});
    EXPECT_EQ(made.exitStatus, 0) << made.err;
  }

  std::string certificate() const { return folder_ / "certificate.pem"; }

  // What is in its files is the content, or with "-HTTP" the whole answer.
  BackgroundChild startServer(int port, const std::string& mode = "-WWW") const {
    ChildOptions options;
    options.directory = folder_ / "web";
    return BackgroundChild({"openssl", "s_server", "-accept", "127.0.0.1:" + std::to_string(port),
                            "-cert", certificate(), "-key", folder_ / "key.pem", mode},
                           options);
  }

  TransferResult runRedirected(const std::string& location) {
    const int port = unusedPort();
    writeFile(folder_ / "web/moved",
              "HTTP/1.0 302 Found\r\nLocation: " + location + "\r\nContent-Length: 0\r\n\r\n");
    writeFile(folder_ / "web/here", "HTTP/1.0 200 OK\r\nContent-Length: 5\r\n\r\nmoved");
    BackgroundChild server = startServer(port, "-HTTP");
    EXPECT_TRUE(server.waitForOutput("ACCEPT"));
    request_.authorities = certificate();
    return run("https://127.0.0.1:" + std::to_string(port) + "/moved");
  }
};

TEST_F(SecureTransfer, RefusesACertificateThatNobodyVouchesFor) {
  const int port = unusedPort();
  BackgroundChild server = startServer(port);
  ASSERT_TRUE(server.waitForOutput("ACCEPT"));
  const TransferResult result = run("https://127.0.0.1:" + std::to_string(port) + "/file");
  EXPECT_EQ(result.error, TransferError::kCertificateUntrusted);
  EXPECT_THAT(result.message, HasSubstr("self-signed certificate"));
  EXPECT_THAT(recorder_.responses, SizeIs(0));
  EXPECT_FALSE(fs::exists(folder_ / "file"));
}

TEST_F(SecureTransfer, TakesACertificateOfATrustedAuthority) {
  const int port = unusedPort();
  BackgroundChild server = startServer(port);
  ASSERT_TRUE(server.waitForOutput("ACCEPT"));
  request_.authorities = certificate();
  const TransferResult result = run("https://127.0.0.1:" + std::to_string(port) + "/file");
  EXPECT_EQ(result.error, TransferError::kNone) << result.message;
  EXPECT_EQ(readFile(folder_ / "file"), "secret content");
}

TEST_F(SecureTransfer, FollowsARedirectThatStaysSecure) {
  const TransferResult result = runRedirected("/here");
  EXPECT_EQ(result.error, TransferError::kNone) << result.message;
  EXPECT_EQ(readFile(folder_ / "file"), "moved");
}

TEST_F(SecureTransfer, FollowsNoRedirectIntoTheClear) {
  server_.answer("/file", answerFile("anybody's content"));
  const TransferResult result = runRedirected(server_.url("/file"));
  EXPECT_EQ(result.error, TransferError::kUnsupportedUrl);
  EXPECT_EQ(result.message, "a redirect to another protocol is not followed");
  EXPECT_THAT(server_.targets(), SizeIs(0)) << "nobody is asked";
  EXPECT_FALSE(fs::exists(folder_ / "file"));
}

TEST_F(SecureTransfer, RefusesACertificateOfAnotherHost) {
  const int port = unusedPort();
  BackgroundChild server = startServer(port);
  ASSERT_TRUE(server.waitForOutput("ACCEPT"));
  request_.authorities = certificate();
  const TransferResult result = run("https://localhost:" + std::to_string(port) + "/file");
  EXPECT_EQ(result.error, TransferError::kCertificateUntrusted);
}

}  // namespace
}  // namespace quillory::platform
