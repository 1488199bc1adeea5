// Release files as an installation asks for them: from a server, or from the folder that is to be
// copied to one. Every request is written down.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "update/transport.h"

namespace quillory::pack {

struct SourceRequest {
  std::string name;        ///< of the file
  int status = 0;          ///< as a web server has it; 0 without an answer
  std::int64_t bytes = 0;  ///< of the body
  std::string reason;      ///< why it did not come, in words; "" when it did
};

class ReleaseSource : public update::Transport {
 public:
  /// `place` is a folder, or a URL that begins with http:// or https://. Throws PackError where
  /// there is no such folder.
  explicit ReleaseSource(const std::string& place);

  /// What every address begins with.
  const std::string& base() const { return base_; }
  update::TransferResult get(const update::TransferRequest& request,
                             update::TransferSink& sink) override;
  const std::vector<SourceRequest>& requests() const { return requests_; }

 private:
  std::string base_;
  std::unique_ptr<update::Transport> files_;
  std::vector<SourceRequest> requests_;
};

/// Whether it is one for a server.
bool isWebAddress(const std::string& place);

}  // namespace quillory::pack
