#include "launcher/driver.h"

#include <cstring>
#include <string>
#include <utility>

#include "launcher/dynamic_params.h"
#include "launcher/failure_report.h"
#include "launcher/installing_start.h"
#include "launcher/start.h"
#include "launcher/start_decision.h"
#include "launcher/start_folders.h"
#include "launcher/start_launch.h"
#include "launcher/wrapper_tail.h"
#include "support/log.h"
#include "ui/splash.h"

namespace quillory {
namespace {

void readParameters(Start& start) {
  auto params = readDynamicParams(start.exe, start.line.prepareOnly, start.properties);
  endUnless(params.has_value());
  start.params = *std::move(params);
}

/// Returns the shared directory that the tail asks for.
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

  if (start.params.showsFailures && start.showsUi()) reportFailuresOf(start.tail.appName);

  addTailProperties(start.tail, start.isSilent, start.properties);
  start.key = loadSignatureKey(start.tail);
  const std::string sharedDirectory = findSharedDirectory(start);
  logMessage("[Extractor] Shared dir is %s\n", sharedDirectory.c_str());
  logUpdateUrlInForce(start.updateUrl);
  return sharedDirectory;
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

std::string runWithoutExtraction(const UpdateDecision& decision) {
  logMessage("[Extractor] Running without extraction now\n");
  splash::cleanup();
  return decision.installedGu;
}

}  // namespace

void runStart(const std::string& exePath, const CommandLine& line,
              const StartSurroundings& surroundings) {
  splash::init();
  Start start;
  start.line = line;
  start.surroundings = surroundings;
  start.exe = locateExecutable(exePath);
  readParameters(start);
  const std::string sharedDirectory = readTail(start);
  enterMasterFolder(start, sharedDirectory);
  logWhatTailCarries(start.tail);
  const UpdateDecision decision = decideInTurn(start);
  const std::string gu = decision.extract ? extractEverything(start, decision.installedGu)
                                          : runWithoutExtraction(decision);
  launchAndEnd(start, gu);
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
