#include "update/curl_transport.h"

#include <strings.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>

#include "formats/downloads.h"
#include "platform/curl_library.h"
#include "support/log.h"
#include "update/cancel.h"
#include "update/system_proxies.h"

namespace quillory::update {
namespace {

using platform::CurlLibrary;
using Clock = std::chrono::steady_clock;

constexpr int kMostRedirects = 20;
constexpr long kReceiveBufferBytes = 128 * 1024;
constexpr std::int64_t kMaxHeadBytes = 64 * 1024;

constexpr int kOk = 200;
constexpr int kPartialContent = 206;

bool begins(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

// libcurl guesses what is missing from an address, and knows a dozen schemes.
bool isWebAddress(std::string_view url) {
  const std::size_t start = begins(url, "https://")  ? std::strlen("https://")
                            : begins(url, "http://") ? std::strlen("http://")
                                                     : url.size();
  return start < url.size() && std::string_view("/?#").find(url[start]) == std::string_view::npos;
}

#ifdef QUILLORY_UPDATE_FILE_URLS
bool isFileAddress(std::string_view url) { return begins(url, "file:///"); }
#else
bool isFileAddress(std::string_view) { return false; }
#endif

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == text.npos) return "";
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

struct HandleCloser {
  const CurlLibrary* library;
  void operator()(CURL* handle) const { library->cleanUp(handle); }
};
struct ListFreer {
  const CurlLibrary* library;
  void operator()(curl_slist* list) const { library->freeList(list); }
};
using Handle = std::unique_ptr<CURL, HandleCloser>;
using HeaderList = std::unique_ptr<curl_slist, ListFreer>;

// One request and its answer, without the redirect that it may be.
class Exchange {
 public:
  Exchange(const CurlLibrary& curl, CURL* handle, const TransferRequest& request,
           TransferSink& sink, double stallSeconds)
      : curl_(curl),
        handle_(handle),
        request_(request),
        sink_(sink),
        stallSeconds_(stallSeconds),
        headers_(nullptr, ListFreer{&curl}) {}

  /// `proxy` is null for what the environment names.
  TransferResult run(const std::string& url, const char* proxy) {
    setOptions(url);
    set(CURLOPT_PROXY, proxy);
    const CURLcode code = curl_.perform(handle_);
    long status = 0;
    const char* redirect = nullptr;
    curl_.getInfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    curl_.getInfo(handle_, CURLINFO_REDIRECT_URL, &redirect);
    head_.status = static_cast<int>(status);
    redirect_ = redirect == nullptr ? "" : redirect;
    TransferResult result = resultOf(code);
    result.status = head_.status;
    addTraffic(result);
    return result;
  }

  /// Where the answer leads; "" when it is the last one.
  const std::string& redirect() const { return redirect_; }

 private:
  template <typename Value>
  void set(CURLoption option, Value value) {
    curl_.setOption(handle_, option, value);
  }

  void addHeader(const std::string& line) {
    curl_slist* const longer = curl_.appendToList(headers_.get(), line.c_str());
    if (longer == nullptr) return;
    (void)headers_.release();
    headers_.reset(longer);
  }

  void setOptions(const std::string& url) {
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_USERAGENT, kUserAgent);
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(stallSeconds_ * 1000));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, kReceiveBufferBytes);
    set(CURLOPT_ERRORBUFFER, message_);
    if (!request_.ifNoneMatch.empty()) addHeader("If-None-Match: " + request_.ifNoneMatch);
    if (request_.from > 0) {
      // Not CURLOPT_RESUME_FROM, which takes an answer with the whole file for a failure.
      addHeader("Range: bytes=" + std::to_string(request_.from) + "-");
      if (!request_.ifRange.empty()) addHeader("If-Range: " + request_.ifRange);
    }
    set(CURLOPT_HTTPHEADER, headers_.get());
    set(CURLOPT_WRITEFUNCTION, &Exchange::onContent);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &Exchange::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_XFERINFOFUNCTION, &Exchange::onProgress);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_NOPROGRESS, 0L);
  }

  // The sink hears of contents only, not of pages that say why there is none.
  bool hasContent() const { return head_.status == kOk || head_.status == kPartialContent; }

  bool begin() {
    long status = 0;
    curl_off_t length = -1;
    curl_.getInfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    curl_.getInfo(handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    // An address of a file has no status.
    head_.status = status == 0 && isFileAddress(request_.url) ? kOk : static_cast<int>(status);
    head_.length = length;
    hasBegun_ = true;
    return !hasContent() || sink_.begin(head_);
  }

  std::size_t content(const char* bytes, std::size_t size) {
    lastSign_ = Clock::now();
    if (!hasBegun_ && !begin()) return stop(TransferEnd::kNotTaken);
    taken_ += static_cast<std::int64_t>(size);
    if (!hasContent()) return taken_ > kMaxHeadBytes ? stop(TransferEnd::kTooLong) : size;
    if (taken_ > request_.mostBytes) return stop(TransferEnd::kTooLong);
    return sink_.take(bytes, size) ? size : stop(TransferEnd::kNotTaken);
  }

  std::size_t stop(TransferEnd why) {
    stopped_ = why;
    return 0;
  }

  void header(std::string_view line) {
    lastSign_ = Clock::now();
    // Of several answers (100, then 200) the last one counts.
    if (begins(line, "HTTP/")) {
      head_ = {};
    } else if (begins(line, "ETag:")) {
      head_.eTag = trimmed(line.substr(std::strlen("ETag:")));
    } else if (begins(line, "Content-Range:")) {
      const std::string_view range = trimmed(line.substr(std::strlen("Content-Range:")));
      if (begins(range, "bytes "))
        head_.from = std::atoll(std::string(range.substr(std::strlen("bytes "))).c_str());
    }
  }

  static std::size_t onContent(const char* bytes, std::size_t, std::size_t size, void* self) {
    return static_cast<Exchange*>(self)->content(bytes, size);
  }

  static std::size_t onHeader(const char* bytes, std::size_t, std::size_t size, void* self) {
    static_cast<Exchange*>(self)->header({bytes, size});
    return size;
  }

  // libcurl's own limit for slow transfers counts in whole seconds and comes late; this one is
  // called several times a second, whatever happens on the connection.
  static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    Exchange& exchange = *static_cast<Exchange*>(self);
    const std::chrono::duration<double> silence = Clock::now() - exchange.lastSign_;
    exchange.isSilent_ = silence.count() >= exchange.stallSeconds_;
    return exchange.isSilent_ || isCancelled ? 1 : 0;
  }

  TransferResult resultOf(CURLcode code) {
    if (isCancelled) return {.end = TransferEnd::kCancelled, .reason = "cancelled"};
    if (stopped_ == TransferEnd::kTooLong)
      return {.end = TransferEnd::kTooLong, .reason = "the server sends more than there should be"};
    if (stopped_ == TransferEnd::kNotTaken)
      return {.end = TransferEnd::kNotTaken, .reason = "not taken"};
    if (isSilent_ || code == CURLE_OPERATION_TIMEDOUT)
      return {.end = TransferEnd::kBroken, .reason = "the server has been silent for too long"};
    if (code != CURLE_OK)
      return {.end = endOf(code), .reason = message_[0] != '\0' ? message_ : curl_.errorText(code)};
    // A content of no bytes is a content, too.
    if (!hasBegun_ && !begin()) return {.end = TransferEnd::kNotTaken, .reason = "not taken"};
    return {.end = TransferEnd::kComplete};
  }

  static TransferEnd endOf(CURLcode code) {
    switch (code) {
      case CURLE_COULDNT_RESOLVE_PROXY:
      case CURLE_COULDNT_RESOLVE_HOST:
      case CURLE_COULDNT_CONNECT:
        return TransferEnd::kUnreachable;
      case CURLE_UNSUPPORTED_PROTOCOL:
      case CURLE_URL_MALFORMAT:
      case CURLE_SSL_CONNECT_ERROR:
      case CURLE_PEER_FAILED_VERIFICATION:
      case CURLE_SSL_CACERT_BADFILE:
        return TransferEnd::kRefused;
      default:
        return TransferEnd::kBroken;
    }
  }

  void addTraffic(TransferResult& result) {
    long up = 0;
    long headDown = 0;
    curl_.getInfo(handle_, CURLINFO_REQUEST_SIZE, &up);
    curl_.getInfo(handle_, CURLINFO_HEADER_SIZE, &headDown);
    result.bytesUp = up;
    result.bytesDown = headDown + taken_;
  }

  const CurlLibrary& curl_;
  CURL* handle_;
  const TransferRequest& request_;
  TransferSink& sink_;
  double stallSeconds_;
  HeaderList headers_;
  TransferHead head_;
  std::string redirect_;
  std::int64_t taken_ = 0;
  bool hasBegun_ = false;
  bool isSilent_ = false;
  TransferEnd stopped_ = TransferEnd::kComplete;
  Clock::time_point lastSign_ = Clock::now();
  char message_[CURL_ERROR_SIZE] = "";
};

class CurlTransport : public Transport {
 public:
  explicit CurlTransport(double stallSeconds) : stallSeconds_(stallSeconds) {}

  TransferResult get(const TransferRequest& request, TransferSink& sink) override {
    if (!makeHandle()) {
      return {.end = TransferEnd::kRefused,
              .reason = std::string(platform::curlLibraryName()) + " cannot be loaded"};
    }
    return follow(request, sink);
  }

 private:
  bool makeHandle() {
    if (curl_ == nullptr) curl_ = platform::curlLibrary();
    if (curl_ == nullptr) return false;
    if (!handle_) handle_ = Handle(curl_->easyInit(), HandleCloser{curl_});
    return handle_ != nullptr;
  }

  TransferResult follow(const TransferRequest& request, TransferSink& sink) {
    std::string url = request.url;
    if (!isWebAddress(url) && !isFileAddress(url))
      return {.end = TransferEnd::kRefused, .reason = "that is no address of the web: " + url};
    TransferResult sum;
    for (int turn = 0; turn <= kMostRedirects; ++turn) {
      std::string redirect;
      TransferResult result = getBy(proxiesFor(url), url, request, sink, redirect);
      sum.bytesUp += result.bytesUp;
      sum.bytesDown += result.bytesDown;
      result.bytesUp = sum.bytesUp;
      result.bytesDown = sum.bytesDown;
      if (result.end != TransferEnd::kComplete || redirect.empty()) return result;
      if (!isWebAddress(redirect) || !mayRedirect(url, redirect)) {
        result.end = TransferEnd::kRefused;
        result.reason = "a redirect to " + redirect + " is not followed";
        return result;
      }
      url = redirect;
    }
    sum.end = TransferEnd::kRefused;
    sum.reason = "too many redirects";
    return sum;
  }

  // By the first of them that answers.
  TransferResult getBy(const Proxies& proxies, const std::string& url,
                       const TransferRequest& request, TransferSink& sink, std::string& redirect) {
    TransferResult result;
    std::size_t next = 0;
    do {
      Exchange exchange(*curl_, handle_.get(), request, sink, stallSeconds_);
      const char* proxy = nullptr;
      if (next < proxies.size()) proxy = proxies[next] == kNoProxy ? "" : proxies[next].c_str();
      result = exchange.run(url, proxy);
      redirect = exchange.redirect();
    } while (result.end == TransferEnd::kUnreachable && ++next < proxies.size());
    return result;
  }

  // They are asked for once a server.
  const Proxies& proxiesFor(const std::string& url) {
    const std::size_t host = url.find("://");
    const std::string server =
        host == url.npos ? "" : url.substr(0, url.find_first_of("/?#", host + 3));
    const auto [known, isNew] = proxies_.try_emplace(server);
    if (isNew && isForSystemProxies(url)) {
      known->second = proxyCalls.proxiesFor(server + '/');
      for (const std::string& proxy : known->second)
        logMessage("[Update] The system's proxy for %s: %s\n", server.c_str(),
                   withoutPassword(proxy).c_str());
    }
    return known->second;
  }

  static std::string withoutPassword(const std::string& proxy) {
    const std::size_t host = proxy.find("://");
    const std::size_t user = proxy.rfind('@');
    if (host == proxy.npos || user == proxy.npos) return proxy;
    return proxy.substr(0, host + 3) + proxy.substr(user + 1);
  }

  double stallSeconds_;
  std::map<std::string, Proxies> proxies_;  ///< of each server
  const CurlLibrary* curl_ = nullptr;
  Handle handle_{nullptr, HandleCloser{nullptr}};
};

}  // namespace

std::unique_ptr<Transport> makeCurlTransport(double stallSeconds) {
  return std::make_unique<CurlTransport>(stallSeconds);
}

}  // namespace quillory::update
