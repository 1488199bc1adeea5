#include "update/installing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "install/installation_lock.h"
#include "java/jre_bundle.h"
#include "support/durable.h"
#include "support/file_modes.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"
#include "update/cancel.h"
#include "update/staged.h"

namespace quillory::update {
namespace {

constexpr FetchEnd kDone = FetchEnd::kComplete;

bool isAnything(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0;
}

// Onto a name that is free, or that of an empty folder, which is all that a refused archive leaves.
FetchResult move(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) == 0) {
    logMessage("[Update] Installed %s\n", to.c_str());
    return {kDone, ""};
  }
  const int error = errno;
  if (error == ENOTEMPTY || error == EEXIST) {
    logMessage("[Update] Somebody else has installed %s\n", to.c_str());
    removeTree(from);
    return {kDone, ""};
  }
  return {error == ENOSPC ? FetchEnd::kNotWritten : FetchEnd::kFailed,
          to + ": " + std::strerror(error)};
}

// The home of a runtime first: see shapeJreBeside().
FetchResult moveRuntime(const Installation& installation, const std::string& folder) {
  const std::string place = joinPath(installation.masterFolder, folder);
  const std::string staged = stagedFolder(installation, folder);
  const std::string home = staged + kStagedHomeSuffix;
  if (isAnything(home)) {
    const FetchResult moved = move(home, place);
    if (moved.end != kDone) return moved;
  }
  // What stands there without a home was left by a start that was killed.
  const std::string bundle = place + kBundleSuffix;
  if (isHalfMade(bundle) && !isFolder(place)) removeTree(bundle);
  return move(staged, bundle);
}

FetchResult moveToPlace(const Installation& installation, const PlannedComponent& planned) {
  if (planned.component.role == kRuntimeRole) return moveRuntime(installation, planned.folder);
  return move(stagedFolder(installation, planned.folder),
              joinPath(installation.masterFolder, planned.folder));
}

}  // namespace

bool mayInstall(const Installation& installation) {
  if (installation.isHardened && installation.isForAllUsers && geteuid() != 0) return false;
  return faccessat(AT_FDCWD, installation.masterFolder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

FetchResult installStaged(const Installation& installation, const Plan& plan) {
  InstallationLock lock;
  if (lock.take(installation.masterFolder, [] {}) == InstallationLock::Taken::kNot)
    return {FetchEnd::kFailed, "a start of the application is installing something"};
  if (isCancelled) return {FetchEnd::kCancelled, "cancelled"};
  for (const char* const role : std::array{kRuntimeRole, kUpdaterRole, kApplicationRole}) {
    for (const PlannedComponent& planned : plan.components) {
      if (planned.component.role != role) continue;
      const FetchResult moved = moveToPlace(installation, planned);
      if (moved.end != kDone) return moved;
      // Before the next one, which may need it.
      syncFolder(installation.masterFolder);
    }
  }
  return {kDone, ""};
}

void finishRuntimes(const Installation& installation) {
  for (const std::string& name : namesIn(stagingFolder(installation))) {
    const std::string staged = stagedFolder(installation, name);
    const std::string place = joinPath(installation.masterFolder, name);
    const bool isBundle = isFolder(joinPath(staged, "Contents"));
    if (!isBundle || isAnything(staged + kStagedHomeSuffix) || !isFolder(place)) continue;
    if (isAnything(place + kBundleSuffix)) continue;
    InstallationLock lock;
    if (lock.tryToTake(installation.masterFolder)) (void)move(staged, place + kBundleSuffix);
  }
}

}  // namespace quillory::update
