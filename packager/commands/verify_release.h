// Looks at a release with the eyes of an installation: everything is loaded, restored, checked and
// unpacked as it would be there.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "packager/commands/command.h"
#include "packager/commands/release_source.h"
#include "packager/report/findings.h"

namespace quillory::pack {

struct VerifyReleaseRequest {
  std::string place;  ///< a folder or a URL
  std::string application;
  std::string channel;
  std::vector<std::string> keys;  ///< that the installation trusts, in hexadecimal
  std::string as;                 ///< the version that it has; "" for none
  std::int64_t now = 0;
};

struct VerifiedRelease {
  std::vector<std::string> steps;       ///< what the client did, a line each
  std::vector<SourceRequest> requests;  ///< the client's, in their order
  std::int64_t bytes = 0;               ///< of their bodies
  Findings findings;
};

/// Throws PackError, with the client's reason, when a client would not have the release at the end.
VerifiedRelease verifyRelease(const VerifyReleaseRequest& request);

/// "verify-release": tells of each step, with its bytes.
Command verifyReleaseCommand();

}  // namespace quillory::pack
