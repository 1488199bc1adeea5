// A small web server on the loopback that answers as a test tells it to, well or badly. What has no
// answer gets a 404. Each connection carries one request.
#pragma once
#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillory::testing {

/// What the server sends, to the byte, and how it ends.
struct HttpAnswer {
  std::string head;  ///< status line and headers, with the empty line; "" sends none
  std::string body;  ///< sent `bodyCount` times, one after another
  std::size_t bodyCount = 1;
  std::size_t partsOfBody = 1;         ///< in which each of them is sent
  std::chrono::milliseconds pause{0};  ///< before each part
  bool isReset = false;                ///< the connection is broken off, not closed
  bool isStalled = false;  ///< then nothing more comes, until the client or the test goes away
};

/// 200 with the length of the body.
HttpAnswer answerFile(const std::string& body);
/// A status with a page of HTML, as web servers explain what went wrong.
HttpAnswer answerError(int status);
/// 200 with a Content-Length of `length`, whatever the body has.
HttpAnswer answerWithLength(const std::string& body, std::size_t length);
/// 200 with a body that the end of the connection ends.
HttpAnswer answerWithoutLength(const std::string& body);
/// 200 in chunks; with `isCut` the connection ends before the last one.
HttpAnswer answerChunked(const std::vector<std::string>& chunks, bool isCut = false);
/// 200 with the length of the body, of which only `sent` bytes come before silence.
HttpAnswer answerStalled(const std::string& body, std::size_t sent);
/// 200 with the length of the body, of which only `sent` bytes come before a reset connection.
HttpAnswer answerReset(const std::string& body, std::size_t sent);
/// 200 with the length of `count` times `piece`, with a pause before each.
HttpAnswer answerInPieces(const std::string& piece, std::size_t count,
                          std::chrono::milliseconds pause = std::chrono::milliseconds{0});
/// 200 with the length of the body, which comes in `parts` with a pause before each.
HttpAnswer answerSlowly(const std::string& body, std::size_t parts,
                        std::chrono::milliseconds pause);
/// The connection is closed without a byte.
HttpAnswer answerNothing();
/// The request is taken, and nothing ever comes.
HttpAnswer answerSilence();
/// `status` with a Location and a page that says so.
HttpAnswer answerRedirect(const std::string& location, int status = 302);

struct HttpRequest {
  std::string method;
  std::string target;  ///< as sent: with its query; a whole URL when the server is used as a proxy
  std::string text;    ///< all of the request, line by line
};

class HttpServer {
 public:
  /// Listens on a free port of 127.0.0.1.
  HttpServer();
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  int port() const { return port_; }
  /// "http://127.0.0.1:<port>" and `path`, which begins with '/'.
  std::string url(const std::string& path = "/") const;

  /// From now on requests for `path`, whatever query follows it, are answered so.
  void answer(const std::string& path, HttpAnswer answer);

  std::vector<HttpRequest> requests() const;
  /// Targets of all requests, in the order in which they came.
  std::vector<std::string> targets() const;

 private:
  void acceptConnections();
  void serve(int connection);
  HttpAnswer answerTo(const HttpRequest& request);
  void waitForEnd(int connection) const;

  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> isStopping_ = false;
  mutable std::mutex mutex_;
  std::map<std::string, HttpAnswer> answers_;
  std::vector<HttpRequest> requests_;
  std::vector<std::thread> connections_;
  std::thread acceptor_;
};

/// A port of the loopback on which nobody listens.
int unusedPort();

}  // namespace quillory::testing
