// A JRE from the update URL. docs/formats/version-file.md has the remote names and the version
// file.
#pragma once
#include <cstdio>
#include <string>

#include "java/jre_provisioning.h"

namespace quillory {

inline constexpr int kMaxVersionLength = 50;

struct DownloadedJre {
  std::string version;
  std::string folder;  ///< the temporary folder that holds it
};

/// The version in a version file: its characters up to the first line end or space, each shown in
/// the log; "" for a null stream. Ends the process with status 1 when there are more than
/// kMaxVersionLength.
std::string readJreVersion(std::FILE* file);

/// Downloads the newest JRE and unpacks it into a temporary folder. Ends the process with status 1
/// when one of the steps fails; nothing then stays but the version file and the log.
DownloadedJre downloadJre(const JreRequest& request);

}  // namespace quillory
