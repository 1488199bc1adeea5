// One transfer from a URL to a file, over libcurl. Plain C++: url_download.h makes Cocoa of it.
#pragma once
#include <atomic>
#include <cstddef>
#include <string>

namespace quillory::platform {

/// What the last server of a chain of redirects said, before its content.
struct TransferResponse {
  std::string url;
  int status = 0;                 ///< 0 where the protocol has none (file:)
  long long expectedLength = -1;  ///< -1 when the server does not tell
};

struct TransferRequest {
  std::string url;   ///< http:, https: or file:; redirects lead to the first two only,
                     ///< and from https: to https:
  std::string path;  ///< replaced when the content begins to arrive; may not exist afterwards
  double timeoutSeconds = 60;  ///< silence of this length ends the transfer, however long it runs
  std::string authorities;     ///< file of the certificates to trust; "" for those of the system
  /// Set by any thread to end the transfer soon.
  std::atomic<bool> isCancelled = false;
};

/// Is told what happens, on the thread that carries the transfer out.
class TransferObserver {
 public:
  virtual ~TransferObserver() = default;
  /// Once, before any content.
  virtual void responseArrived(const TransferResponse& response) = 0;
  /// So many bytes more have been written.
  virtual void dataArrived(std::size_t length) = 0;
};

/// The values are those of Cocoa's NSURLErrorDomain.
enum class TransferError : int {
  kNone = 0,
  kUnknown = -1,
  kCancelled = -999,
  kBadUrl = -1000,
  kTimedOut = -1001,
  kUnsupportedUrl = -1002,
  kCannotFindHost = -1003,
  kCannotConnect = -1004,
  kConnectionLost = -1005,
  kTooManyRedirects = -1007,
  kBadServerResponse = -1011,
  kFileDoesNotExist = -1100,
  kSecureConnectionFailed = -1200,
  kCertificateUntrusted = -1202,
  kCannotWrite = -3003,
};

struct TransferResult {
  TransferError error = TransferError::kNone;
  std::string message;  ///< for a person; "" without an error
};

/// Carries the transfer out and returns at its end, on whatever thread. The content of an error
/// page (status 404 and the like) is content too. After any error there is no file at `path`.
TransferResult transfer(const TransferRequest& request, TransferObserver& observer);

}  // namespace quillory::platform
