#include "launcher/installing_start.h"

#include <cstdlib>
#include <optional>

#include "formats/extraction.h"
#include "install/closed_installation.h"
#include "install/unfinished.h"
#include "install/version_folders.h"
#include "java/jre_inspection.h"
#include "java/jre_provisioning.h"
#include "java/launch_flow.h"
#include "launcher/component_extraction.h"
#include "launcher/elevated_setup.h"
#include "launcher/start_launch.h"
#include "support/exit_status.h"
#include "support/file_modes.h"
#include "support/files.h"
#include "support/log.h"
#include "support/start_end.h"
#include "support/user_work.h"
#include "ui/splash.h"

namespace quillory {
namespace {

/// Under the fixed names in the folder of all users, anybody could block the set-up of a user.
std::string folderForSplash(const Start& start) {
  const std::string& shared = start.surroundings.sharedTemporaryFolder;
  return start.params.isHardened ? makePrivateFolder(shared) : shared;
}

/// Where this user may not write to the master folder, it never comes back, but where elevation
/// would not help: false.
bool makeFirstTempFolder(Start& start, const ComponentFolders& folders) {
  if (mayBeUsed(start.masterFolder) && makeNewDir(folders.guTemp.c_str()) == 0) return true;
  // The elevated copy takes it, while this process waits for that.
  start.lock.release();
  logMessage("[Extractor] Unable to create GU Temp folder - assuming elevation required\n");
  const StartSurroundings& around = start.surroundings;
  if (!mayElevate(start.line.prepareOnly, around.isRelaunchedCopy())) return false;
  const std::string pictureFolder = folderForSplash(start);
  const bool isPrivate = pictureFolder != around.sharedTemporaryFolder;
  if (!pictureFolder.empty()) {
    const ExtractionResult extracted =
        extractSplashForElevation(start.archivesOf("", ""), start.splashOverride(), pictureFolder);
    if (extracted.isFailure()) {
      if (isPrivate) removeTree(pictureFolder);
      std::exit(exitStatusOf(extracted));
    }
  }
  logMessage("[Extractor] Performing elevated setup and launch\n");
  doElevatedSetupAndLaunch(start.tail.appName, start.line.fullArgc, start.line.fullArgv,
                           start.isSilent, start.exe);
  if (!pictureFolder.empty() && isPrivate) removeTree(pictureFolder);
  noteStage(StartStage::kOver);
  std::exit(kExitSuccess);
}

FetchDisplay splashAsDisplay() {
  return {.show = splash::showSplash,
          .showIndefiniteProgress = [] { splash::setProgress(splash::kProgressIndefinite); },
          .takeDown = splash::cleanup};
}

/// Whether a program of the installation may run now: with the administrator's rights, none that
/// anybody else could have put there.
bool mayRun(const Start& start, const std::string& path) {
  if (!start.isClosedToOthers() || isOutOfReach(start.masterFolder, path)) return true;
  logMessage("[SUDO] Any user could have written %s: not run with the administrator's rights\n",
             path.c_str());
  return false;
}

/// Asks the compatibility class of an installed updater about a `java` of the system.
bool isCompatibleWith(const Start& start, const std::string& updaterFolder,
                      const std::string& java) {
  if (!mayRun(start, joinPath(start.masterFolder, updaterFolder))) return false;
  LaunchRequest check = launchOf(start, updaterFolder);
  check.launchClass = kLaunchCompatibilityCheck;
  check.javaToCheck = java;
  const LaunchResult result = launch(check);
  if (!result.status) std::exit(result.exitStatus);
  return isCompatible(result);
}

/// What a start runs that could not install all of what its bundle carries. One that is not
/// hardened ends with `status`, as does one that runs nothing, or that finds nothing whole.
std::string runWhatIsThere(const Start& start, int status) {
  if (!start.params.isHardened || start.line.prepareOnly) std::exit(status);
  const std::optional<std::string> gu = runnableUpdater(start.question());
  if (!gu) std::exit(status);
  splash::cleanup();
  logMessage("[Extractor] What this bundle carries is not installed. Will run what is there: %s\n",
             gu->c_str());
  return *gu;
}

/// Provides the JRE, and with it the path of its unpack200, "" where that must not run.
JreOutcome<std::string> setUpJre(const Start& start, const ComponentFolders& folders,
                                 const UpdaterFiles& updater) {
  const JreOutcome<std::string> jre = provisionJre(
      {.place = {start.masterFolder, start.jreName},
       .embedded = {start.tail.jreVersion, start.tailStream.get(), start.params.jreName},
       .system = {.requiredJavaVersion = start.tail.requiredJavaVersion,
                  .isCompatible =
                      [&start](const std::string& updaterFolder, const std::string& java) {
                        return isCompatibleWith(start, updaterFolder, java);
                      },
                  .isAutoTest = start.params.isAutoTest,
                  .places = {},
                  .onlyWhole = start.params.isHardened},
       .server = {start.updateUrl.inForce(), folders.gu},
       .tools = {updater.lzmaTool, start.key, start.params.isHardened},
       .display = start.showsUi() ? splashAsDisplay() : FetchDisplay{},
       .caCerts = updater.caCerts});
  if (!jre.provided) return jre;
  const std::string unpack200 = unpack200Of(*jre.provided);
  logMessage("[Extractor] UP200 path is %s\n", unpack200.c_str());
  return {.provided = mayRun(start, unpack200) ? unpack200 : ""};
}

}  // namespace

std::string extractEverything(Start& start, const std::string& installedGu) {
  logMessage(installedGu.empty() ? "[Extractor] Note: No latest GU version exists\n"
                                 : "[Extractor] Note: Latest GU version does exist\n");
  if (start.tail.guVersion.empty()) {
    logMessage("[Extractor] Unable to run (we are just a launcher)\n");
    std::exit(kExitFailure);
  }
  makeDir(start.masterFolder.c_str());
  const ComponentFolders folders = nameComponentFolders(start.masterFolder, start.tail.guVersion,
                                                        start.tail.appName, start.tail.appVersion);
  if (!makeFirstTempFolder(start, folders)) return runWhatIsThere(start, kExitFailure);
  // Behind the above, which may wait for the application itself.
  const UserWork work("installs an application");
  const ExtractionResult updaterResult = extractUpdater(
      start.archivesOf(kUpdaterName, start.tail.guVersion), folders, start.splashOverride());
  if (updaterResult.isFailure()) return runWhatIsThere(start, exitStatusOf(updaterResult));
  const UpdaterFiles updater = locateUpdaterFiles(folders.gu);
  showSplash(start, updater.splashPicture);
  const JreOutcome<std::string> unpack200 = setUpJre(start, folders, updater);
  if (!unpack200.provided) return runWhatIsThere(start, unpack200.exitStatus);
  if (start.tail.appVersion.empty()) {
    logMessage("[Extractor] Online installer - no app to extract\n");
  } else {
    const ExtractionResult result =
        extractApplication(start.archivesOf(start.tail.appName, start.tail.appVersion), folders,
                           {.lzma = updater.lzmaTool, .unpack200 = *unpack200.provided});
    if (result.isFailure()) return runWhatIsThere(start, exitStatusOf(result));
  }

  markFinished(folders.gu);

  const std::optional<std::string> gu = updaterToRun(start.masterFolder, start.params.isHardened);
  if (!gu) {
    logError("No latest App version even after download!\n");
    std::exit(kExitFailure);
  }
  splash::cleanup();
  logMessage("[Extractor] Will now run latest GU %s\n", gu->c_str());
  return *gu;
}

}  // namespace quillory
