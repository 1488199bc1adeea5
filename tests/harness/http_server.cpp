#include "tests/harness/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>

namespace quillory::testing {
namespace {

constexpr int kLookAroundMillis = 20;
constexpr timeval kLongestSend = {.tv_sec = 20, .tv_usec = 0};
constexpr std::size_t kLongestRequest = 64 * 1024;

sockaddr_in loopback() {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// A bound socket, on a port that the system chooses.
std::pair<int, int> bindToFreePort() {
  const int bound = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback();
  socklen_t length = sizeof address;
  if (bound < 0 || bind(bound, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      getsockname(bound, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("no port on the loopback");
  }
  return {bound, ntohs(address.sin_port)};
}

bool isReadable(int descriptor) {
  pollfd waiting = {descriptor, POLLIN, 0};
  return poll(&waiting, 1, kLookAroundMillis) > 0;
}

bool sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

std::string head(const std::string& status, const std::string& headers) {
  return "HTTP/1.1 " + status + "\r\nConnection: close\r\n" + headers + "\r\n";
}

std::string lengthHeader(std::size_t length) {
  return "Content-Length: " + std::to_string(length) + "\r\n";
}

HttpRequest parsed(std::string text) {
  HttpRequest request;
  const std::size_t methodEnd = text.find(' ');
  const std::size_t targetEnd = text.find(' ', methodEnd + 1);
  if (targetEnd != std::string::npos) {
    request.method = text.substr(0, methodEnd);
    request.target = text.substr(methodEnd + 1, targetEnd - methodEnd - 1);
  }
  request.text = std::move(text);
  return request;
}

std::string_view partOf(const HttpAnswer& answer, std::size_t part) {
  const std::string_view body = answer.body;
  const std::size_t begin = body.size() * part / answer.partsOfBody;
  const std::size_t end = body.size() * (part + 1) / answer.partsOfBody;
  return body.substr(begin, end - begin);
}

/// "/path" of "/path?query" and of "http://host/path?query".
std::string pathOf(const std::string& target) {
  const std::size_t scheme = target.find("://");
  const std::size_t start = scheme == std::string::npos ? 0 : target.find('/', scheme + 3);
  if (start == std::string::npos) return "/";
  return target.substr(start, target.find('?', start) - start);
}

}  // namespace

HttpAnswer answerFile(const std::string& body) { return answerWithLength(body, body.size()); }

HttpAnswer answerWithLength(const std::string& body, std::size_t length) {
  return {.head = head("200 OK", lengthHeader(length)), .body = body};
}

HttpAnswer answerError(int status) {
  const std::string page = "<html><body>Error " + std::to_string(status) + "</body></html>\n";
  const std::string type = "Content-Type: text/html\r\n";
  return {.head = head(std::to_string(status) + " Error", type + lengthHeader(page.size())),
          .body = page};
}

HttpAnswer answerWithoutLength(const std::string& body) {
  return {.head = head("200 OK", ""), .body = body};
}

HttpAnswer answerChunked(const std::vector<std::string>& chunks, bool isCut) {
  std::string body;
  for (const std::string& chunk : chunks) {
    char size[32];
    std::snprintf(size, sizeof size, "%zx\r\n", chunk.size());
    body += size + chunk + "\r\n";
  }
  if (!isCut) body += "0\r\n\r\n";
  return {.head = head("200 OK", "Transfer-Encoding: chunked\r\n"), .body = body};
}

HttpAnswer answerStalled(const std::string& body, std::size_t sent) {
  HttpAnswer answer = answerWithLength(body.substr(0, sent), body.size());
  answer.isStalled = true;
  return answer;
}

HttpAnswer answerReset(const std::string& body, std::size_t sent) {
  HttpAnswer answer = answerWithLength(body.substr(0, sent), body.size());
  answer.isReset = true;
  return answer;
}

HttpAnswer answerInPieces(const std::string& piece, std::size_t count,
                          std::chrono::milliseconds pause) {
  HttpAnswer answer = answerWithLength(piece, piece.size() * count);
  answer.bodyCount = count;
  answer.pause = pause;
  return answer;
}

HttpAnswer answerSlowly(const std::string& body, std::size_t parts,
                        std::chrono::milliseconds pause) {
  HttpAnswer answer = answerFile(body);
  answer.partsOfBody = parts;
  answer.pause = pause;
  return answer;
}

HttpAnswer answerNothing() { return {}; }

HttpAnswer answerSilence() {
  HttpAnswer answer;
  answer.isStalled = true;
  return answer;
}

HttpAnswer answerRedirect(const std::string& location, int status) {
  const std::string page = "<html><body>It has moved.</body></html>\n";
  return {.head = head(std::to_string(status) + " Moved",
                       "Location: " + location + "\r\n" + lengthHeader(page.size())),
          .body = page};
}

HttpServer::HttpServer() {
  std::tie(listener_, port_) = bindToFreePort();
  if (listen(listener_, 16) != 0) throw std::runtime_error("cannot listen on the loopback");
  acceptor_ = std::thread(&HttpServer::acceptConnections, this);
}

HttpServer::~HttpServer() {
  isStopping_ = true;
  acceptor_.join();
  for (std::thread& connection : connections_) connection.join();
  close(listener_);
}

std::string HttpServer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void HttpServer::answer(const std::string& path, HttpAnswer answer) {
  const std::lock_guard lock(mutex_);
  answers_[path] = std::move(answer);
}

std::vector<HttpRequest> HttpServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::vector<std::string> HttpServer::targets() const {
  std::vector<std::string> targets;
  for (const HttpRequest& request : requests()) targets.push_back(request.target);
  return targets;
}

void HttpServer::acceptConnections() {
  while (!isStopping_) {
    if (!isReadable(listener_)) continue;
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection >= 0) connections_.emplace_back(&HttpServer::serve, this, connection);
  }
}

void HttpServer::serve(int connection) {
  setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &kLongestSend, sizeof kLongestSend);
  std::string text;
  char buffer[4096];
  while (!isStopping_ && text.find("\r\n\r\n") == std::string::npos) {
    if (!isReadable(connection)) continue;
    const ssize_t got = recv(connection, buffer, sizeof buffer, 0);
    if (got <= 0 || text.size() > kLongestRequest) break;
    text.append(buffer, static_cast<std::size_t>(got));
  }
  const HttpAnswer answer = answerTo(parsed(std::move(text)));
  bool isOpen = sendAll(connection, answer.head);
  const std::size_t parts = answer.bodyCount * answer.partsOfBody;
  for (std::size_t i = 0; isOpen && !isStopping_ && i < parts; ++i) {
    std::this_thread::sleep_for(answer.pause);
    isOpen = sendAll(connection, partOf(answer, i % answer.partsOfBody));
  }
  if (isOpen && answer.isStalled) waitForEnd(connection);
  if (answer.isReset) {
    const linger reset = {1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  }
  close(connection);
}

HttpAnswer HttpServer::answerTo(const HttpRequest& request) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(request);
  const auto answer = answers_.find(pathOf(request.target));
  return answer == answers_.end() ? answerError(404) : answer->second;
}

void HttpServer::waitForEnd(int connection) const {
  while (!isStopping_) {
    if (isReadable(connection)) return;
  }
}

int unusedPort() {
  const auto [bound, port] = bindToFreePort();
  close(bound);
  return port;
}

}  // namespace quillory::testing
