#include "launcher/start_launch.h"

#include <cstdlib>

#include "install/closed_installation.h"
#include "support/exit_status.h"

namespace quillory {

LaunchRequest launchOf(const Start& start, const std::string& updaterFolder) {
  return {.masterFolder = start.masterFolder,
          .appFolderName = updaterFolder,
          .ownFolder = start.ownFolder == start.masterFolder ? "" : start.ownFolder,
          .properties = start.properties,
          .userArguments = {start.line.args, start.line.args + start.line.argCount},
          .updateUrl = start.updateUrl.toldOfTail(),
          .dynamicUpdateUrl = start.updateUrl.toldOfParams(),
          .launchedFromDynprops = start.exe.absolutePath,
          .showsWaits = start.params.isHardened && start.showsUi()};
}

void launchAndEnd(Start& start, const std::string& guFolderName) {
  start.tailStream.reset();
  LaunchRequest request = launchOf(start, guFolderName);
  request.jreName = start.jreName.text();
  request.onlyWholeJre = start.params.isHardened;
  if (start.isClosedToOthers()) {
    if (start.isHardenedForAll()) prepareLaunch(request);
    openInstallation(start.masterFolder);
  }
  start.lock.release();
  if (start.line.prepareOnly) std::exit(kExitSuccess);
  const LaunchResult result = launch(request);
  // Nothing was started, and the log says why. Callers of a bundle that is not hardened count on 0.
  if (start.params.isHardened && result.status.value_or(0) != 0) std::exit(kExitFailure);
  std::exit(result.exitStatus);
}

}  // namespace quillory
