#include "update/staged.h"

#include <algorithm>

#include "support/files.h"
#include "support/folder_listing.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/update_folder.h"

namespace quillory::update {

std::string stagingFolder(const Installation& installation) {
  return installation.inUpdates(kStagingFolder);
}

std::string stagedFolder(const Installation& installation, const std::string& folder) {
  return joinPath(stagingFolder(installation), folder);
}

std::string makingFolder(const Installation& installation, const std::string& name) {
  return joinPath(stagingFolder(installation), kMakingPrefix + name);
}

bool isStagedWhole(const Installation& installation, const std::string& folder,
                   const ReleaseComponent& component) {
  const std::string staged = stagedFolder(installation, folder);
  if (isLink(staged)) return false;
  return readPlainFile(joinPath(staged, kArchiveHashFile), kMaxFileNameBytes) ==
         component.plainSha256 + '\n';
}

void clearStaging(const Installation& installation, const std::vector<std::string>& folders) {
  for (const std::string& name : namesIn(stagingFolder(installation))) {
    const bool isWanted = std::any_of(folders.begin(), folders.end(), [&](const auto& folder) {
      return name == folder || name == folder + kStagedHomeSuffix;
    });
    if (!isWanted) removeTree(stagedFolder(installation, name));
  }
}

}  // namespace quillory::update
