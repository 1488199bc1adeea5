#include "update/retention.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "install/installation_lock.h"
#include "java/jre_bundle.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"
#include "update/staged.h"
#include "update/update_folder.h"
#include "update/versions.h"

namespace quillory::update {
namespace {

constexpr std::int64_t kFewestKept = 2;

// Java locks by fcntl(2).
bool isLockedByAnother(const std::string& path) {
  const int file = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  const bool isLocked = fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  close(file);
  return isLocked;
}

std::string holdOf(const Installation& installation, const std::string& folder) {
  return joinPath(installation.inUpdates(kHoldsFolder), folder);
}

class Deletion {
 public:
  Deletion(const Installation& installation, std::int64_t keep)
      : installation_(installation), keep_(std::max(keep, kFewestKept)) {}

  void run() {
    const std::vector<InstalledVersion> applications = applicationVersions(installation_);
    keepGood(applications);
    deleteBeyond(applications, installation_.bundleAppVersion);
    deleteBeyond(updaterVersions(installation_), installation_.bundleUpdaterVersion);
    deleteBeyond(runtimeVersions(installation_), "");
  }

 private:
  void keepGood(const std::vector<InstalledVersion>& applications) {
    const std::vector<Trial> trials = readTrials(installation_.updatesFolder());
    const auto isGood = [&](const InstalledVersion& version) {
      return std::any_of(trials.begin(), trials.end(), [&](const Trial& trial) {
        return trial.isGood && trial.folder == version.folder;
      });
    };
    auto good = std::find_if(applications.begin(), applications.end(), isGood);
    for (int kept = 0; good != applications.end() && kept < kFewestKept; ++good, ++kept)
      good_.push_back(good->folder);
  }

  bool isKept(const InstalledVersion& version, const std::string& inBundle) const {
    const std::string path = joinPath(installation_.masterFolder, version.folder);
    return (!inBundle.empty() && version.version == inBundle) ||
           path == installation_.updaterFolder ||
           std::find(good_.begin(), good_.end(), version.folder) != good_.end() ||
           isHeld(installation_, version.folder);
  }

  void deleteBeyond(const std::vector<InstalledVersion>& versions, const std::string& inBundle) {
    const auto keep = static_cast<std::size_t>(keep_);
    for (std::size_t i = keep; i < versions.size(); ++i)
      if (!isKept(versions[i], inBundle)) remove(versions[i]);
  }

  // Of a runtime its home first: a bundle alone is none.
  void remove(const InstalledVersion& version) const {
    if (!removeOne(version.folder)) return;
    removeOne(version.folder + kBundleSuffix);
    unlink(holdOf(installation_, version.folder).c_str());
    logMessage("[Update] Deleted %s\n", version.folder.c_str());
  }

  bool removeOne(const std::string& name) const {
    const std::string old = joinPath(stagingFolder(installation_), kOldPrefix + name);
    removeTree(old);
    const std::string path = joinPath(installation_.masterFolder, name);
    if (std::rename(path.c_str(), old.c_str()) != 0) return false;
    removeTree(old);
    return true;
  }

  const Installation& installation_;
  const std::int64_t keep_;
  std::vector<std::string> good_;
};

}  // namespace

bool isHeld(const Installation& installation, const std::string& folder) {
  return isLockedByAnother(holdOf(installation, folder));
}

void deleteOldVersions(const Installation& installation, std::int64_t keep) {
  InstallationLock lock;
  if (!lock.tryToTake(installation.masterFolder)) return;
  if (!makeDirWithParents(stagingFolder(installation))) return;
  Deletion(installation, keep).run();
}

}  // namespace quillory::update
