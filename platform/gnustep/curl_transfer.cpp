#include "platform/gnustep/curl_transfer.h"

#include <strings.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/curl_library.h"
#include "support/new_file.h"

namespace quillory::platform {
namespace {

constexpr long kMostRedirects = 20;
constexpr long kReceiveBufferBytes = 256 * 1024;

using Clock = std::chrono::steady_clock;

bool isSecure(const std::string& url) {
  return strncasecmp(url.c_str(), "https:", std::strlen("https:")) == 0;
}

class Transfer {
 public:
  Transfer(const CurlLibrary& curl, const TransferRequest& request, TransferObserver& observer)
      : curl_(curl),
        request_(request),
        observer_(observer),
        handle_(curl.easyInit(), curl.cleanUp) {}

  TransferResult run() {
    if (handle_ == nullptr) return {TransferError::kUnknown, "out of memory"};
    setOptions();
    const CURLcode code = curl_.perform(handle_.get());
    if (code != CURLE_OK) return failure(code);
    // A content of no bytes is a file, too.
    if (!file_ && !begin()) return failure(CURLE_WRITE_ERROR);
    return file_->close() ? TransferResult{} : failure(CURLE_WRITE_ERROR);
  }

 private:
  template <typename Value>
  void set(CURLoption option, Value value) {
    curl_.setOption(handle_.get(), option, value);
  }

  void setOptions() {
    set(CURLOPT_URL, request_.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https,file");
    // Never from https to http, where whoever stands on the way can answer in the server's place.
    set(CURLOPT_REDIR_PROTOCOLS_STR, isSecure(request_.url) ? "https" : "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, kMostRedirects);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(request_.timeoutSeconds * 1000));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, kReceiveBufferBytes);
    set(CURLOPT_ERRORBUFFER, message_);
    if (!request_.authorities.empty()) set(CURLOPT_CAINFO, request_.authorities.c_str());
    set(CURLOPT_WRITEFUNCTION, &Transfer::onContent);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_XFERINFOFUNCTION, &Transfer::onProgress);
    set(CURLOPT_XFERINFODATA, this);
    set(CURLOPT_NOPROGRESS, 0L);
  }

  bool begin() {
    announceResponse();
    // Others may write to the folder: what they put at the path is replaced, never followed.
    return file_.emplace(request_.path).isOpen();
  }

  void announceResponse() {
    TransferResponse response;
    long status = 0;
    curl_off_t length = -1;
    const char* url = nullptr;
    curl_.getInfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
    curl_.getInfo(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    curl_.getInfo(handle_.get(), CURLINFO_EFFECTIVE_URL, &url);
    response.status = static_cast<int>(status);
    response.expectedLength = length;
    response.url = url == nullptr ? request_.url : url;
    observer_.responseArrived(response);
  }

  static std::size_t onContent(const char* bytes, std::size_t, std::size_t length, void* context) {
    Transfer& transfer = *static_cast<Transfer*>(context);
    transfer.lastSign_ = Clock::now();
    // A file that is made now would be there behind the back of whoever has given up.
    if (transfer.request_.isCancelled) return CURL_WRITEFUNC_ERROR;
    if (!transfer.file_ && !transfer.begin()) return CURL_WRITEFUNC_ERROR;
    if (!transfer.file_->write(bytes, length)) return CURL_WRITEFUNC_ERROR;
    transfer.observer_.dataArrived(length);
    return length;
  }

  static std::size_t onHeader(const char*, std::size_t, std::size_t length, void* context) {
    static_cast<Transfer*>(context)->lastSign_ = Clock::now();
    return length;
  }

  // libcurl's own limit for slow transfers counts in whole seconds and comes late; this one is
  // called several times a second, whatever happens on the connection.
  static int onProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    Transfer& transfer = *static_cast<Transfer*>(context);
    const std::chrono::duration<double> silence = Clock::now() - transfer.lastSign_;
    transfer.isSilent_ = silence.count() >= transfer.request_.timeoutSeconds;
    return transfer.isSilent_ || transfer.request_.isCancelled ? 1 : 0;
  }

  TransferResult failure(CURLcode code) const {
    if (request_.isCancelled) return {TransferError::kCancelled, "cancelled"};
    if (isSilent_ || code == CURLE_OPERATION_TIMEDOUT)
      return {TransferError::kTimedOut, "The request timed out."};
    if (code == CURLE_UNSUPPORTED_PROTOCOL)
      return {errorFor(code), "a redirect to another protocol is not followed"};
    const bool isExplained = message_[0] != '\0';
    return {errorFor(code), isExplained ? message_ : curl_.errorText(code)};
  }

  static TransferError errorFor(CURLcode code) {
    switch (code) {
      case CURLE_UNSUPPORTED_PROTOCOL:
        return TransferError::kUnsupportedUrl;
      case CURLE_URL_MALFORMAT:
        return TransferError::kBadUrl;
      case CURLE_COULDNT_RESOLVE_PROXY:
      case CURLE_COULDNT_RESOLVE_HOST:
        return TransferError::kCannotFindHost;
      case CURLE_COULDNT_CONNECT:
        return TransferError::kCannotConnect;
      case CURLE_PARTIAL_FILE:
      case CURLE_GOT_NOTHING:
      case CURLE_SEND_ERROR:
      case CURLE_RECV_ERROR:
        return TransferError::kConnectionLost;
      case CURLE_TOO_MANY_REDIRECTS:
        return TransferError::kTooManyRedirects;
      case CURLE_WEIRD_SERVER_REPLY:
        return TransferError::kBadServerResponse;
      case CURLE_FILE_COULDNT_READ_FILE:
        return TransferError::kFileDoesNotExist;
      case CURLE_SSL_CONNECT_ERROR:
        return TransferError::kSecureConnectionFailed;
      case CURLE_PEER_FAILED_VERIFICATION:
      case CURLE_SSL_CACERT_BADFILE:
        return TransferError::kCertificateUntrusted;
      case CURLE_WRITE_ERROR:
        return TransferError::kCannotWrite;
      default:
        return TransferError::kUnknown;
    }
  }

  const CurlLibrary& curl_;
  const TransferRequest& request_;
  TransferObserver& observer_;
  const std::unique_ptr<CURL, decltype(CurlLibrary::cleanUp)> handle_;
  std::optional<NewFile> file_;  // from the response on
  Clock::time_point lastSign_ = Clock::now();
  bool isSilent_ = false;
  char message_[CURL_ERROR_SIZE] = "";
};

// libcurl guesses what is missing from a URL: the protocol, or a host behind too many slashes.
bool isWholeUrl(const std::string& url) {
  const std::size_t schemeLength = url.find("://");
  if (schemeLength == std::string::npos) return false;
  const std::string scheme = url.substr(0, schemeLength);
  const std::size_t hostStart = schemeLength + 3;
  if (strcasecmp(scheme.c_str(), "file") == 0) return true;
  if (strcasecmp(scheme.c_str(), "http") != 0 && strcasecmp(scheme.c_str(), "https") != 0)
    return false;
  return hostStart < url.size() &&
         std::string_view("/?#").find(url[hostStart]) == std::string::npos;
}

}  // namespace

TransferResult transfer(const TransferRequest& request, TransferObserver& observer) {
  if (!isWholeUrl(request.url)) return {TransferError::kUnsupportedUrl, "unsupported URL"};
  const CurlLibrary* const curl = curlLibrary();
  if (curl == nullptr) return {TransferError::kUnknown, "libcurl.so.4 cannot be loaded"};
  return Transfer(*curl, request, observer).run();
}

}  // namespace quillory::platform
