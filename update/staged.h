// Components that have been unpacked and verified, and wait for their place:
//
//   QYUpdates/staging/<folder>         the version folder as it will be; of a runtime, its bundle
//   QYUpdates/staging/<folder>.home    of a runtime, what will be behind the bundle's home
//   QYUpdates/staging/.making-<name>   what is not yet whole
//   QYUpdates/staging/.old-<name>      a version folder that is being deleted
//
// What has the first name is whole, and on the disk.
#pragma once
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "update/installation.h"

namespace quillory::update {

inline constexpr char kMakingPrefix[] = ".making-";
inline constexpr char kOldPrefix[] = ".old-";
inline constexpr char kStagedHomeSuffix[] = ".home";

std::string stagingFolder(const Installation& installation);
std::string stagedFolder(const Installation& installation, const std::string& folder);
std::string makingFolder(const Installation& installation, const std::string& name);

/// Whether `folder` waits there, of the archive that the component names.
bool isStagedWhole(const Installation& installation, const std::string& folder,
                   const ReleaseComponent& component);

/// Removes everything from the staging folder but the staged ones of `folders`.
void clearStaging(const Installation& installation, const std::vector<std::string>& folders);

}  // namespace quillory::update
