#include "launcher/start_decision.h"

#include <optional>
#include <string>

#include "install/installation_lock.h"
#include "install/leftovers.h"
#include "install/version_folders.h"
#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

/// Shows the picture of the updater that another start is installing, as soon as it is there.
void showSplashOfOther(const Start& start, bool& isShown) {
  if (isShown || !start.showsUi()) return;
  std::string picture;
  {
    const LogPause pause;
    const std::optional<std::string> gu = newestVersionFolder(start.masterFolder, kUpdaterName);
    if (gu) picture = joinPath(start.masterFolder, *gu, kSplashPictureName);
    if (picture.empty() || !doesFileExist(picture.c_str())) return;
  }
  showSplash(start, picture);
  isShown = true;
}

/// Takes the lock for a start that has something to install, and decides again: meanwhile another
/// one may have installed it.
UpdateDecision decideUnderLock(Start& start, const UpdateDecision& first) {
  bool isSplashShown = false;
  const InstallationLock::Taken taken =
      start.lock.take(start.masterFolder, [&] { showSplashOfOther(start, isSplashShown); });
  if (taken == InstallationLock::Taken::kNot) return first;
  clearLeftovers(start.masterFolder);
  if (taken == InstallationLock::Taken::kAtOnce) {
    const LogPause pause;
    const UpdateDecision second = decideUpdate(start.question());
    if (second.extract) return second;
  }
  logMessage("[Extractor] Another start may have installed something, will check again\n");
  return decideUpdate(start.question());
}

/// Clears up behind starts that were killed, unless another one is at work right now.
void clearUp(Start& start) {
  if (!hasLeftovers(start.masterFolder) || !start.lock.tryToTake(start.masterFolder)) return;
  clearLeftovers(start.masterFolder);
  start.lock.release();
}

}  // namespace

UpdateDecision decideInTurn(Start& start) {
  clearUp(start);
  const UpdateDecision first = decideUpdate(start.question());
  return first.extract ? decideUnderLock(start, first) : first;
}

}  // namespace quillory
