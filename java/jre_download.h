// A JRE from the update URL. docs/formats/version-file.md has the remote names and the version
// file.
#pragma once
#include <cstdio>
#include <optional>
#include <string>

#include "formats/version_file_format.h"
#include "java/jre_request.h"

namespace quillory {

struct FetchedJre {
  std::string version;
  std::string folder;  ///< the temporary folder that holds it
};

/// The version in a version file: its characters up to the first line end or space, each shown in
/// the log; "" for a null stream. Nothing, with a line in the log, when there are more than
/// kMaxVersionLength.
std::optional<std::string> readJreVersion(std::FILE* file);

/// Downloads the newest JRE and unpacks it into a temporary folder. Nothing when one of the steps
/// fails: an error is in the log, and of the download only the version file stays.
JreOutcome<FetchedJre> downloadJre(const JrePlace& place, const JreServer& server,
                                   const ArchiveTools& tools, const FetchDisplay& display);

}  // namespace quillory
