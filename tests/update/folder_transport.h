// A web server that is a folder, without a network: ETags, ranges and conditions as real ones have
// them, and whatever goes wrong on the way as a test tells it to.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "update/transport.h"

namespace quillory::testing {

/// What happens to one answer.
struct Mishap {
  int status = 0;              ///< instead of the file's
  std::int64_t cutAfter = -1;  ///< so many bytes of the body come, and the connection is gone
  bool isUnreachable = false;
  std::string body{};  ///< instead of the file's, where hasBody
  bool hasBody = false;
  bool ignoresRange = false;
  std::int64_t shiftRange = 0;  ///< the part begins so many bytes elsewhere
};

struct AskedFor {
  std::string name;  ///< of the file, decoded
  update::TransferRequest request;
  int status = 0;
  std::int64_t sent = 0;  ///< bytes of the body
};

class FolderTransport : public update::Transport {
 public:
  /// Addresses that begin with `base` ("http://one.test/") are answered from `folder`.
  void serve(const std::string& base, const std::string& folder);
  update::TransferResult get(const update::TransferRequest& request,
                             update::TransferSink& sink) override;

  /// Asked about every request; by default nothing happens.
  std::function<Mishap(const AskedFor&)> mishap = [](const AskedFor&) { return Mishap(); };

  std::vector<AskedFor> asked;
  /// How many of them were for files whose names hold `part`.
  int countAsked(const std::string& part) const;
  /// Bytes of bodies that were sent.
  std::int64_t sent() const;

 private:
  std::vector<std::pair<std::string, std::string>> folders_;
};

}  // namespace quillory::testing
