// Which versions of a component are installed, and what is known of each.
#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "update/installation.h"

namespace quillory::update {

struct InstalledVersion {
  std::string folder;   ///< its name in the master folder
  std::string version;  ///< as it stands in that name
  long number = 0;      ///< by which versions are compared
  /// Of the plain archive that it was unpacked from; "" for what a launcher has installed, which
  /// nobody has written down.
  std::string archiveSha256;
};

/// The number that a version is compared by: its digits up to the first other character.
long numberOf(const std::string& version);

// Those that are whole, the newest first.
std::vector<InstalledVersion> applicationVersions(const Installation& installation);
std::vector<InstalledVersion> updaterVersions(const Installation& installation);
std::vector<InstalledVersion> runtimeVersions(const Installation& installation);

/// What the updater has found out about a version that it has tried.
struct Trial {
  std::string folder;
  std::string archiveSha256;
  bool isGood = false;
  bool isBlocked = false;  ///< it is not started again, nor offered
};

/// From the updater's file; none where there is no such file, or it is damaged.
std::vector<Trial> readTrials(const std::string& updatesFolder);

/// Whether the archive, or a folder of that name without one, has been blocked.
bool isBlocked(const std::vector<Trial>& trials, const std::string& folder,
               const std::string& archiveSha256);

}  // namespace quillory::update
