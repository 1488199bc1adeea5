// The ways from earlier releases to a new one: for each part deltas from the versions before it.
#pragma once
#include <map>
#include <string>

#include "formats/release_list.h"
#include "packager/commands/release_folder.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct DeltaOptions {
  int versions = 5;  ///< from so many earlier versions of each part
  std::string made;  ///< the folder for the deltas
};

/// Makes deltas to the components of `list` from the archives that lie in the folder, several at a
/// time, and names them in the list. `plainArchives` has the plain archive of each component, by
/// its role. What an earlier release has made is named again; what is not worth while is left out,
/// as a detail tells; an archive that is gone becomes a note. Throws PackError when one cannot be
/// read.
void addDeltas(ReleaseList& list, const std::map<std::string, std::string>& plainArchives,
               const ReleaseFolder& folder, const DeltaOptions& options, Reporter& reporter);

}  // namespace quillory::pack
