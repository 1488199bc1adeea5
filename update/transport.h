// One request to a web server, and what became of it: the seam between what quillory-update wants
// and how it comes. curl_transport.h is the real one.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

namespace quillory::update {

struct TransferRequest {
  std::string url;
  std::string ifNoneMatch{};   ///< an ETag: nothing comes when it still holds; "" none
  std::int64_t from = 0;       ///< the first byte that is wanted
  std::string ifRange{};       ///< an ETag: all comes when it no longer holds; "" none
  std::int64_t mostBytes = 0;  ///< a body with more is none
};

/// What the server says before the body.
struct TransferHead {
  int status = 0;            ///< 200 or 206; others have no body that would be of use
  std::int64_t from = 0;     ///< where the body begins in the file
  std::int64_t length = -1;  ///< of the body; -1 when it is not said
  std::string eTag{};        ///< as it came, with its quotes
};

class TransferSink {
 public:
  virtual ~TransferSink() = default;
  /// False ends the transfer: kNotTaken.
  virtual bool begin(const TransferHead& head) = 0;
  virtual bool take(const char* bytes, std::size_t size) = 0;
};

enum class TransferEnd {
  kComplete,     ///< with any status
  kNotTaken,     ///< by the sink
  kTooLong,      ///< more bytes than wanted
  kCancelled,    ///< see update/cancel.h
  kUnreachable,  ///< no connection: no host of that name, nobody who answers
  kBroken,       ///< it ended before its end, or no byte came for a while
  kRefused,      ///< an address or a redirect that is not followed, or a server that is not trusted
};

struct TransferResult {
  TransferEnd end = TransferEnd::kUnreachable;
  int status = 0;            ///< 304, 404 and so on; 0 without an answer
  std::string reason{};      ///< in words; "" for a complete transfer
  std::int64_t bytesUp = 0;  ///< as sent and received, heads included
  std::int64_t bytesDown = 0;
};

class Transport {
 public:
  virtual ~Transport() = default;
  virtual TransferResult get(const TransferRequest& request, TransferSink& sink) = 0;
};

}  // namespace quillory::update
