#include "java/launch_flow.h"

#include <sys/stat.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/launch_file.h"
#include "formats/record_stream.h"
#include "install/version_folders.h"
#include "java/app_executable.h"
#include "java/launch_command.h"
#include "java/launch_properties.h"
#include "java/launch_start.h"
#include "support/exit_status.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

/// The result of a launch class that there is not.
constexpr int kNothingLaunched = -1;

/// The parameters of a launch, as text.
struct LaunchRequest {
  std::string masterFolder;
  const PropertyBlock& properties;
  std::vector<std::string> userArguments;
  std::string appFolderName;
  LaunchFacts facts;
  int launchClass;
};

/// The runtime that a launch uses.
struct LaunchRuntime {
  std::string folder;  ///< path of the private JRE; only for launch class 0
  std::string executable;
  std::string rememberedOptionsPath;  ///< empty for a system JRE
};

std::string textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

OwnedFile openLaunchFile(const std::string& path) {
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  struct stat status;
  // A folder opens for reading too, and would read as an empty launch file.
  const bool isUsable = file && fstat(fileno(file.get()), &status) == 0 && !S_ISDIR(status.st_mode);
  if (!isUsable) {
    logError("Unable to open launch file %s\n", path.c_str());
    std::exit(kExitFailure);
  }
  return file;
}

LaunchRuntime chooseRuntime(const LaunchRequest& request, const std::string& appName) {
  LaunchRuntime runtime;
  // Looked for in both launch classes, so that the log tells which private JRE there was.
  const OwnedText privateJre(
      pickAndAllocLatestFromMaster(request.masterFolder.c_str(), request.facts.jre.c_str()));
  if (request.launchClass == kLaunchCompatibilityCheck) {
    runtime.executable = request.facts.jre;
    logMessage("[Extractor] Checking for existing system JRE %s\n", request.facts.jre.c_str());
    return runtime;
  }
  if (request.launchClass != kLaunchApplication) return runtime;
  if (!privateJre) {
    logError("No private JRE available!\n");
    std::exit(kExitFailure);
  }
  logMessage("[Extractor] Using private JRE %s\n", privateJre.get());
  runtime.folder = joinPath(request.masterFolder, privateJre.get());
  runtime.executable = provideAppExecutable(runtime.folder + "/bin", appName);
  runtime.rememberedOptionsPath = joinPath(request.masterFolder, "QYApps") +
                                  "/JRE-LastSuccessfulOptions-" + pathToFile(privateJre.get());
  logMessage("[Extractor] JRE LSO file is %s\n", runtime.rememberedOptionsPath.c_str());
  return runtime;
}

void readClassPath(std::FILE* launchFile, const std::string& appFolder, LaunchCommand& command) {
  logMessage("[Extractor] Building classpath\n");
  const long count = readLong(launchFile, "Classpath Count");
  setClassPath(appFolder, readLaunchEntries(launchFile, count, "Classpath Entry"), command);
}

/// Writes the properties of this launch; their file becomes the first application argument.
void passProperties(const LaunchRequest& request, const LaunchRuntime& runtime,
                    LaunchCommand& command) {
  logMessage("[Extractor] Creating launch properties\n");
  PropertyBlock block = request.properties;
  addLaunchTimeProperties(request.facts, block);
  for (std::string& option : readRememberedOptions(runtime.rememberedOptionsPath, block))
    command.jvmOptions.push_back(std::move(option));
  command.applicationArguments.push_back(writeLaunchProperties(block, request.facts.appFolder));
}

void passExtraArguments(std::FILE* launchFile, LaunchCommand& command) {
  const long count = readLong(launchFile, "Extra Args Count");
  logMessage("[Extractor] Reading %ld extra args\n", count);
  for (std::string& argument : readLaunchEntries(launchFile, count, "Extra Args Entry"))
    command.applicationArguments.push_back(std::move(argument));
}

void passUserArguments(const LaunchRequest& request, LaunchCommand& command) {
  command.applicationArguments.insert(command.applicationArguments.end(),
                                      request.userArguments.begin(), request.userArguments.end());
  logMessage("[Extractor] Appending %d command line args\n",
             static_cast<int>(request.userArguments.size()));
}

void logArguments(const std::vector<std::string>& arguments, int launchClass) {
  logMessage("[Extractor] Executable: %s\n", arguments[0].c_str());
  int index = 0;
  for (const std::string& argument : arguments)
    logMessage("[Extractor] Argument %d: %s\n", index++, argument.c_str());
  logMessage("[Extractor] This is a newer extractor... launchclass is %d\n", launchClass);
}

/// A compatibility check with a file that names no class for it has none: the list of the process
/// ends there by intent, so that its exit status cannot be the one that says "compatible".
std::optional<std::string> classToRun(int launchClass, const LaunchHeader& header,
                                      const LaunchTrailer& trailer) {
  if (launchClass == kLaunchApplication) return header.mainClass;
  if (launchClass == kLaunchCompatibilityCheck && trailer.hasCompatibilityClass)
    return trailer.compatibilityClass;
  return std::nullopt;
}

std::int64_t launch(const LaunchRequest& request) {
  logStartSection("Launching");
  logMessage("[Extractor] Launching '%s' from master folder '%s' of class %d using JRE '%s'\n",
             request.appFolderName.c_str(), request.masterFolder.c_str(), request.launchClass,
             request.facts.jre.c_str());
  OwnedFile launchFile = openLaunchFile(joinPath(request.facts.appFolder, kLaunchFileName));
  const LaunchHeader header = readLaunchHeader(launchFile.get());
  const LaunchRuntime runtime = chooseRuntime(request, header.appName);

  LaunchCommand command;
  command.executable = runtime.executable;
  addMemoryOptions(header.jvmMemory, header.jvmStack, command);
  readClassPath(launchFile.get(), request.facts.appFolder, command);
  passProperties(request, runtime, command);
  passExtraArguments(launchFile.get(), command);
  const LaunchTrailer trailer = readLaunchTrailer(launchFile.get(), header.version);
  command.classToRun = classToRun(request.launchClass, header, trailer);
  passUserArguments(request, command);
  logArguments(processArguments(command), request.launchClass);
  launchFile.reset();

  if (request.launchClass == kLaunchApplication)
    return startApplication(header.mainClass, runtime.folder, forceSpawn, command);
  if (request.launchClass == kLaunchCompatibilityCheck) return runCompatibilityClass(command);
  return kNothingLaunched;
}

}  // namespace

bool forceSpawn = false;

std::int64_t launchFromLaunchFile(const char* masterFolder, const PropertyBlock& properties,
                                  int argCount, char** args, const char* appFolderName,
                                  const char* updateUrl, const char* dynamicUpdateUrl,
                                  const char* jre, int launchClass, const char*, bool, const char*,
                                  const char* launchedFromDynprops, bool, const char*) {
  const std::string master = textOrEmpty(masterFolder);
  const std::string appName = textOrEmpty(appFolderName);
  return launch({.masterFolder = master,
                 .properties = properties,
                 .userArguments = {args, args + (argCount > 0 ? argCount : 0)},
                 .appFolderName = appName,
                 .facts = {.updateUrl = textOrEmpty(updateUrl),
                           .dynamicUpdateUrl = dynamicUpdateUrl,
                           .appFolder = joinPath(master, appName),
                           .jre = textOrEmpty(jre),
                           .launchedFromDynprops = textOrEmpty(launchedFromDynprops)},
                 .launchClass = launchClass});
}

std::int64_t launchApp(const char* masterFolder, const PropertyBlock& properties, int argCount,
                       char** args, const char* appFolderName, const char* updateUrl,
                       const char* dynamicUpdateUrl, const char* jre, const char* unusedText,
                       bool unusedFlag, const char* unusedText2, const char* launchedFromDynprops,
                       bool unusedFlag2, const char* unusedText3) {
  return launchFromLaunchFile(masterFolder, properties, argCount, args, appFolderName, updateUrl,
                              dynamicUpdateUrl, jre, kLaunchApplication, unusedText, unusedFlag,
                              unusedText2, launchedFromDynprops, unusedFlag2, unusedText3);
}

bool checkAppJreCompatibility(const char* masterFolder, const PropertyBlock& properties,
                              int argCount, char** args, const char* appFolderName,
                              const char* updateUrl, const char* dynamicUpdateUrl,
                              const char* javaPath, const char* launchedFromDynprops) {
  return launchFromLaunchFile(masterFolder, properties, argCount, args, appFolderName, updateUrl,
                              dynamicUpdateUrl, javaPath, kLaunchCompatibilityCheck, nullptr, false,
                              nullptr, launchedFromDynprops, false, nullptr) == kExitJreCompatible;
}

}  // namespace quillory
