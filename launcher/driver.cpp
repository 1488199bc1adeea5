#include "launcher/driver.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "formats/extraction.h"
#include "formats/property_block.h"
#include "formats/update_url.h"
#include "install/closed_installation.h"
#include "install/file_logging.h"
#include "install/install_locations.h"
#include "install/installation_lock.h"
#include "install/jre_name.h"
#include "install/leftovers.h"
#include "install/unfinished.h"
#include "install/version_folders.h"
#include "java/jre_inspection.h"
#include "java/jre_provisioning.h"
#include "java/launch_flow.h"
#include "launcher/bundle_paths.h"
#include "launcher/component_extraction.h"
#include "launcher/dynamic_params.h"
#include "launcher/elevated_setup.h"
#include "launcher/update_decision.h"
#include "launcher/wrapper_tail.h"
#include "support/exit_status.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "ui/splash.h"

namespace quillory {
namespace {

// For a step that has said in the log why it could not be done: nothing can follow it.
void endUnless(bool isDone) {
  if (!isDone) std::exit(kExitFailure);
}

void endUnlessExtracted(const ExtractionResult& result) {
  if (result.isFailure()) std::exit(exitStatusOf(result));
}

/// One start, filled in step by step.
struct Start {
  CommandLine line;
  StartSurroundings surroundings;
  Executable exe;
  PropertyBlock properties;
  DynamicParams params;
  OwnedFile tailStream;
  TailRecords tail;
  bool isSilent = false;
  UpdateUrl updateUrl;
  Rsa_key* key = nullptr;
  std::string masterFolder;
  /// Where this start writes what is its user's: the master folder, unless only the administrator
  /// writes there.
  std::string ownFolder;
  JreName jreName;
  InstallationLock lock;  ///< held while something is installed

  TailArchives archivesOf(const std::string& component, const std::string& version) const {
    return {tailStream.get(), key, params.isHardened,
            ArchiveIdentity{component, version, std::string(thisPlatform())}};
  }
  UpdateQuestion question() const {
    return {masterFolder,   tail.appName,    jreName.text(),
            tail.guVersion, tail.appVersion, params.isHardened};
  }
  SplashOverride splashOverride() const { return {tail.canOverrideSplash, params.splashImage}; }
  bool showsUi() const { return !isSilent && !line.prepareOnly; }
  bool isHardenedForAll() const { return params.isHardened && isForAllUsers(tail.installType); }
  /// Whether the administrator's rights are at work on what others could otherwise write to.
  bool isClosedToOthers() const {
    return geteuid() == 0 && (line.prepareOnly || isHardenedForAll());
  }
};

std::string findSharedDirectory(const Start& start) {
  const std::optional<std::string> directory =
      sharedDirectoryFor(start.tail.installType, start.surroundings.homeFolder);
  if (!directory) logMessage("ERROR: Unable to get shared dir!");
  endUnless(directory.has_value());
  return *directory;
}

std::string readTail(Start& start) {
  start.tailStream = openWrapperTail(start.exe);
  endUnless(start.tailStream != nullptr);
  start.tail = readTailRecords(start.tailStream.get());
  start.updateUrl = UpdateUrl(start.tail.updateUrl, start.params.updateUrl);
  logUpdateUrlChoice(start.updateUrl);
  start.isSilent = start.params.isSilent || isSilent(start.tail.silentParameter.c_str(),
                                                     start.line.argCount, start.line.args);
  logMessage("[Extractor] Is silent install is %d\n", start.isSilent ? 1 : 0);
  logEndSection("Extracting tail\n");
  endUnless(hasUsableNames(start.tail));

  addTailProperties(start.tail, start.isSilent, start.properties);
  start.key = loadSignatureKey(start.tail);
  const std::string sharedDirectory = findSharedDirectory(start);
  logMessage("[Extractor] Shared dir is %s\n", sharedDirectory.c_str());
  logUpdateUrlInForce(start.updateUrl);
  return sharedDirectory;
}

void chooseModes(const Start& start) {
  if (start.isHardenedForAll()) {
    chooseInstallationModes(InstallationModes::kOnlyTrustedAreUsed);
  } else if (start.params.isHardened) {
    chooseInstallationModes(InstallationModes::kOwnerWrites);
  }
  // An application is not started by this run, which could inherit it.
  if (start.line.prepareOnly && start.isClosedToOthers()) umask(022);
}

std::string ownFolderOf(const Start& start) {
  if (!start.isHardenedForAll() || start.line.prepareOnly) return start.masterFolder;
  const std::string folder = ownFolderFor(start.surroundings.homeFolder(), start.tail.appName);
  logMessage("[Extractor] Own folder is %s\n", folder.c_str());
  return folder;
}

/// The folder whose QYApps/JreNameOverride counts: the administrator's before the user's own.
const std::string& folderOfOverride(const Start& start) {
  const bool isSafe = mayBeUsed(joinPath(start.masterFolder, "QYApps"));
  return isSafe ? start.masterFolder : start.ownFolder;
}

void enterMasterFolder(Start& start, const std::string& sharedDirectory) {
  chooseModes(start);
  if (start.line.prepareOnly) createDirectoryForAllUsers(sharedDirectory);
  start.masterFolder = masterFolderFor(sharedDirectory, start.tail.appName);
  logMessage("[Extractor] Master folder is %s\n", start.masterFolder.c_str());
  if (start.isClosedToOthers()) endUnless(closeInstallation(start.masterFolder));
  start.ownFolder = ownFolderOf(start);
  setupFileLogging(start.ownFolder.c_str());

  const std::optional<JreName> jreName = JreName::make(
      overrideJreName(folderOfOverride(start), start.params.jreName), start.tail.jreVersion);
  endUnless(jreName.has_value());
  start.jreName = *jreName;
  makeDir(joinPath(start.ownFolder, "QYAppsSharedConfig").c_str());
}

void logWhatTailCarries(const TailRecords& tail) {
  if (tail.guVersion.empty()) {
    logMessage("[Extractor] No GenericUpdater embedded, we are just a launcher\n");
  } else {
    logMessage("[Extractor] GenericUpdater version is %s\n", tail.guVersion.c_str());
  }
  if (tail.appVersion.empty()) {
    logMessage("[Extractor] ONLINE wrapper: No App embedded, GU will download and run\n");
  } else {
    logMessage("[Extractor] OFFLINE wrapper: App version is %s\n", tail.appVersion.c_str());
  }
}

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
  if (!pictureFolder.empty())
    endUnlessExtracted(
        extractSplashForElevation(start.archivesOf("", ""), start.splashOverride(), pictureFolder));
  logMessage("[Extractor] Performing elevated setup and launch\n");
  doElevatedSetupAndLaunch(start.tail.appName, start.line.fullArgc, start.line.fullArgv,
                           start.isSilent, start.exe);
  if (!pictureFolder.empty() && pictureFolder != around.sharedTemporaryFolder)
    removeTree(pictureFolder);
  std::exit(kExitSuccess);
}

void showSplash(const Start& start, const std::string& picture) {
  logMessage("[Extractor] Configuring splash\n");
  splash::configureSplash(picture.c_str());
  logMessage("[Extractor] Showing splash\n");
  if (start.showsUi()) splash::showSplash();
  splash::setProgress(splash::kProgressIndefinite);
}

FetchDisplay splashAsDisplay() {
  return {.show = splash::showSplash,
          .showIndefiniteProgress = [] { splash::setProgress(splash::kProgressIndefinite); },
          .takeDown = splash::cleanup};
}

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
                  .places = {}},
       .server = {start.updateUrl.inForce(), folders.gu},
       .tools = {updater.lzmaTool, start.key, start.params.isHardened},
       .display = start.showsUi() ? splashAsDisplay() : FetchDisplay{},
       .caCerts = updater.caCerts});
  if (!jre.provided) return jre;
  const std::string unpack200 = unpack200Of(*jre.provided);
  logMessage("[Extractor] UP200 path is %s\n", unpack200.c_str());
  return {.provided = mayRun(start, unpack200) ? unpack200 : ""};
}

/// Installs the updater, a JRE and the application; returns the folder name of the updater to run.
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

UpdateDecision decide(const Start& start) { return decideUpdate(start.question()); }

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
    const UpdateDecision second = decide(start);
    if (second.extract) return second;
  }
  logMessage("[Extractor] Another start may have installed something, will check again\n");
  return decide(start);
}

/// Clears up behind starts that were killed, unless another one is at work right now.
void clearUp(Start& start) {
  if (!hasLeftovers(start.masterFolder) || !start.lock.tryToTake(start.masterFolder)) return;
  clearLeftovers(start.masterFolder);
  start.lock.release();
}

/// The folder name of the updater to run: the installed one, or that of the tail.
std::string installOrUpdate(Start& start) {
  logWhatTailCarries(start.tail);
  clearUp(start);
  UpdateDecision decision = decide(start);
  // A start in which everything is current waits for nobody.
  if (decision.extract) decision = decideUnderLock(start, decision);
  if (decision.extract) return extractEverything(start, decision.installedGu);
  logMessage("[Extractor] Running without extraction now\n");
  splash::cleanup();
  return decision.installedGu;
}

[[noreturn]] void handOff(Start& start, const std::string& guFolderName) {
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
  std::exit(launch(request).exitStatus);
}

}  // namespace

void runStart(const std::string& exePath, const CommandLine& line,
              const StartSurroundings& surroundings) {
  splash::init();
  Start start;
  start.line = line;
  start.surroundings = surroundings;
  start.exe = locateExecutable(exePath);
  auto params = readDynamicParams(start.exe, line.prepareOnly, start.properties);
  endUnless(params.has_value());
  start.params = *std::move(params);
  const std::string sharedDirectory = readTail(start);
  enterMasterFolder(start, sharedDirectory);
  const std::string guFolderName = installOrUpdate(start);
  handOff(start, guFolderName);
}

void extractWrapperTail(char* exePath, int argCount, char** args, int fullArgc, char** fullArgv,
                        bool prepareOnly) {
  runStart(exePath, {argCount, args, fullArgc, fullArgv, prepareOnly});
}

bool isSilent(const char* silentParameter, int argCount, char** args) {
  if (silentParameter == nullptr || *silentParameter == '\0') return false;
  for (int i = 0; i < argCount; ++i)
    if (std::strcmp(args[i], silentParameter) == 0) return true;
  return false;
}

}  // namespace quillory
