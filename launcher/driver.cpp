#include "launcher/driver.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "formats/property_block.h"
#include "formats/update_url.h"
#include "install/file_logging.h"
#include "install/install_locations.h"
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

struct CommandLine {
  int argCount;
  char** args;
  int fullArgc;
  char** fullArgv;
  bool prepareOnly;
};

/// One start, filled in step by step.
struct Start {
  CommandLine line;
  Executable exe;
  PropertyBlock properties;
  DynamicParams params;
  OwnedFile tailStream;
  TailRecords tail;
  bool isSilent = false;
  UpdateUrl updateUrl;
  Rsa_key* key = nullptr;
  std::string masterFolder;
  std::string jreName;

  TailArchives archives() const { return {tailStream.get(), key}; }
  SplashOverride splashOverride() const { return {tail.canOverrideSplash, params.splashImage}; }
  bool showsUi() const { return !isSilent && !line.prepareOnly; }
  const char* dynamicUpdateUrl() const {
    return updateUrl.toldOfParams().has_value() ? updateUrl.toldOfParams()->c_str() : nullptr;
  }
};

std::string findSharedDirectory(const Start& start) {
  const OwnedText directory(locateSharedDirectory(start.tail.installType.c_str()));
  if (directory == nullptr) {
    logMessage("ERROR: Unable to get shared dir!");
    std::exit(kExitFailure);
  }
  return directory.get();
}

std::string readTail(Start& start) {
  start.tailStream = openWrapperTail(start.exe);
  start.tail = readTailRecords(start.tailStream.get());
  start.updateUrl = UpdateUrl(start.tail.updateUrl, start.params.updateUrl);
  logUpdateUrlChoice(start.updateUrl);
  start.isSilent = start.params.isSilent || isSilent(start.tail.silentParameter.c_str(),
                                                     start.line.argCount, start.line.args);
  logMessage("[Extractor] Is silent install is %d\n", start.isSilent ? 1 : 0);
  logEndSection("Extracting tail\n");
  refuseUnusableNames(start.tail);

  addTailProperties(start.tail, start.isSilent, start.properties);
  start.key = loadSignatureKey(start.tail);
  const std::string sharedDirectory = findSharedDirectory(start);
  logMessage("[Extractor] Shared dir is %s\n", sharedDirectory.c_str());
  logUpdateUrlInForce(start.updateUrl);
  return sharedDirectory;
}

void enterMasterFolder(Start& start, const std::string& sharedDirectory) {
  if (start.line.prepareOnly) createDirectoryForAllUsers(sharedDirectory);
  start.masterFolder = masterFolderFor(sharedDirectory, start.tail.appName);
  logMessage("[Extractor] Master folder is %s\n", start.masterFolder.c_str());
  setupFileLogging(start.masterFolder.c_str());

  start.jreName = overrideJreName(start.masterFolder, start.params.jreName);
  refuseUnusableJreName(start.jreName, start.tail.jreVersion);
  makeDir(joinPath(start.masterFolder, "QYAppsSharedConfig").c_str());
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

/// Never comes back when this user may not write to the master folder.
void makeFirstTempFolder(const Start& start, const ComponentFolders& folders) {
  if (makeDir(folders.guTemp.c_str()) == 0) return;
  logMessage("[Extractor] Unable to create GU Temp folder - assuming elevation required\n");
  refuseSecondElevation(start.line.prepareOnly);
  extractSplashForElevation(start.archives(), start.splashOverride());
  logMessage("[Extractor] Performing elevated setup and launch\n");
  doElevatedSetupAndLaunch(start.tail.appName, start.line.fullArgc, start.line.fullArgv,
                           start.isSilent, start.exe);
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

/// Provides the JRE and returns the path of its unpack200.
std::string setUpJre(const Start& start, const ComponentFolders& folders,
                     const UpdaterFiles& updater) {
  JreRequest request;
  request.masterFolder = start.masterFolder;
  request.jreName = start.jreName;
  request.embeddedVersion = start.tail.jreVersion;
  request.requiredJavaVersion = start.tail.requiredJavaVersion;
  request.updateUrl = start.updateUrl.inForce();
  request.versionFileFolder = folders.gu;
  request.lzmaTool = updater.lzmaTool;
  request.caCerts = updater.caCerts;
  request.tail = start.tailStream.get();
  request.key = start.key;
  if (start.showsUi()) request.display = splashAsDisplay();
  request.isAutoTest = start.params.isAutoTest;
  request.properties = &start.properties;
  request.argCount = start.line.argCount;
  request.args = start.line.args;
  request.tailUpdateUrl = start.updateUrl.toldOfTail();
  request.dynamicUpdateUrl = start.dynamicUpdateUrl();
  request.absoluteExePath = start.exe.absolutePath;

  const std::string bundle = provisionJre(request);
  const OwnedText unpack200(getUnpack200Executable(bundle.c_str()));
  logMessage("[Extractor] UP200 path is %s\n", unpack200.get());
  return unpack200.get();
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
  makeFirstTempFolder(start, folders);
  extractUpdater(start.archives(), folders, start.splashOverride());
  const UpdaterFiles updater = locateUpdaterFiles(folders.gu);
  showSplash(start, updater.splashPicture);
  const std::string unpack200 = setUpJre(start, folders, updater);
  if (start.tail.appVersion.empty()) {
    logMessage("[Extractor] Online installer - no app to extract\n");
  } else {
    extractApplication(start.archives(), folders, updater.lzmaTool.c_str(), unpack200.c_str());
  }

  const OwnedText gu(pickAndAllocLatestFromMaster(start.masterFolder.c_str(), kUpdaterName));
  if (gu == nullptr) {
    logError("No latest App version even after download!\n");
    std::exit(kExitFailure);
  }
  splash::cleanup();
  logMessage("[Extractor] Will now run latest GU %s\n", gu.get());
  return gu.get();
}

/// The folder name of the updater to run: the installed one, or that of the tail.
std::string installOrUpdate(Start& start) {
  logWhatTailCarries(start.tail);
  const UpdateDecision decision =
      decideUpdate({start.masterFolder, start.tail.appName, start.jreName, start.tail.guVersion,
                    start.tail.appVersion});
  if (decision.extract) return extractEverything(start, decision.installedGu);
  logMessage("[Extractor] Running without extraction now\n");
  splash::cleanup();
  return decision.installedGu;
}

[[noreturn]] void handOff(Start& start, const std::string& guFolderName) {
  start.tailStream.reset();
  if (start.line.prepareOnly) std::exit(kExitSuccess);
  launchFromLaunchFile(start.masterFolder.c_str(), start.properties, start.line.argCount,
                       start.line.args, guFolderName.c_str(), start.updateUrl.toldOfTail().c_str(),
                       start.dynamicUpdateUrl(), start.jreName.c_str(), kLaunchApplication, nullptr,
                       false, nullptr, start.exe.absolutePath.c_str(), false, nullptr);
  std::exit(kExitSuccess);
}

}  // namespace

void extractWrapperTail(char* exePath, int argCount, char** args, int fullArgc, char** fullArgv,
                        bool prepareOnly) {
  splash::init();
  Start start;
  start.line = {argCount, args, fullArgc, fullArgv, prepareOnly};
  start.exe = locateExecutable(exePath);
  start.params = readDynamicParams(start.exe, prepareOnly, start.properties);
  const std::string sharedDirectory = readTail(start);
  enterMasterFolder(start, sharedDirectory);
  const std::string guFolderName = installOrUpdate(start);
  handOff(start, guFolderName);
}

bool isSilent(const char* silentParameter, int argCount, char** args) {
  if (silentParameter == nullptr || *silentParameter == '\0') return false;
  for (int i = 0; i < argCount; ++i)
    if (std::strcmp(args[i], silentParameter) == 0) return true;
  return false;
}

}  // namespace quillory
