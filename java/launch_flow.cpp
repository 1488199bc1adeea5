#include "java/launch_flow.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/launch_file.h"
#include "formats/launch_properties_format.h"
#include "formats/record_stream.h"
#include "formats/remembered_options_format.h"
#include "install/version_folders.h"
#include "java/app_executable.h"
#include "java/chosen_application.h"
#include "java/jre_bundle.h"
#include "java/launch_command.h"
#include "java/launch_properties.h"
#include "java/launch_start.h"
#include "java/startup_archive.h"
#include "java/trial_end.h"
#include "support/exit_status.h"
#include "support/file_modes.h"
#include "support/log.h"
#include "support/open_requests.h"
#include "support/opened_files.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/start_end.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

/// The result of a launch class that there is not.
constexpr int kNothingLaunched = -1;

/// The runtime that a launch uses.
struct LaunchRuntime {
  std::string folder;  ///< path of the private JRE; only for launch class 0
  std::string executable;
  std::string rememberedOptionsPath;  ///< empty for a system JRE
};

/// Which Java the launch is told to use, as the log and the properties show it.
const std::string& givenJava(const LaunchRequest& request) {
  return request.launchClass == kLaunchCompatibilityCheck ? request.javaToCheck : request.jreName;
}

std::string appFolderOf(const LaunchRequest& request) {
  return joinPath(request.masterFolder, request.appFolderName);
}

/// Null, with an error in the log, when there is no file. One that could be read in part would be
/// taken for one that says nothing of the rest, so all of it is read here.
OwnedFile openLaunchFile(const std::string& path) {
  const std::optional<std::string> bytes = readWholeFile(path);
  OwnedFile file = bytes ? streamOver(*bytes) : nullptr;
  if (!file) logError("Unable to open launch file %s\n", path.c_str());
  return file;
}

/// Options of the JVM, which decide what is executed: "" where another user could have written
/// them.
std::string rememberedOptionsOf(const LaunchRequest& request, const std::string& privateJre) {
  const bool isOwn = !request.ownFolder.empty();
  const std::string folder = joinPath(isOwn ? request.ownFolder : request.masterFolder, "QYApps");
  // The folder, the master folder and the two of the user's directory.
  constexpr int kLevels = 4;
  std::filesystem::path place = folder;
  for (int level = 0; isOwn && level < kLevels; ++level, place = place.parent_path()) {
    if (mayBeUsed(place)) continue;
    logMessage("[Extractor] %s could have been changed by another user. Not used.\n",
               place.c_str());
    return "";
  }
  return folder + '/' + kRememberedOptionsPrefix + privateJre;
}

/// Nothing, with an error in the log, when the application has no private JRE to run on.
std::optional<LaunchRuntime> chooseRuntime(const LaunchRequest& request,
                                           const std::string& appName) {
  LaunchRuntime runtime;
  // Looked for whatever is launched, so that the log tells which private JRE there was.
  const std::optional<std::string> privateJre =
      request.onlyWholeJre
          ? newestVersionFolder(request.masterFolder, givenJava(request), isWholeJre)
          : newestVersionFolder(request.masterFolder, givenJava(request));
  if (request.launchClass == kLaunchCompatibilityCheck) {
    runtime.executable = request.javaToCheck;
    logMessage("[Extractor] Checking for existing system JRE %s\n", request.javaToCheck.c_str());
    return runtime;
  }
  if (request.launchClass != kLaunchApplication) return runtime;
  if (!privateJre) {
    logError("No private JRE available!\n");
    return std::nullopt;
  }
  logMessage("[Extractor] Using private JRE %s\n", privateJre->c_str());
  runtime.folder = joinPath(request.masterFolder, *privateJre);
  runtime.executable = provideAppExecutable(runtime.folder + "/bin", appName);
  runtime.rememberedOptionsPath = rememberedOptionsOf(request, *privateJre);
  logMessage("[Extractor] JRE LSO file is %s\n", runtime.rememberedOptionsPath.c_str());
  return runtime;
}

void readClassPath(std::FILE* launchFile, const std::string& appFolder, LaunchCommand& command) {
  logMessage("[Extractor] Building classpath\n");
  const long count = readLong(launchFile, kClassPathRecord.name);
  setClassPath(appFolder, readLaunchEntries(launchFile, count, kClassPathRecord.entryName),
               command);
}

/// Another file of the same start.
std::string besideProperties(std::string propertiesFile, const char* prefix) {
  constexpr std::string_view kPrefix = kLaunchPropertiesPrefix;
  const std::size_t name = propertiesFile.rfind('/') + 1;
  return propertiesFile.replace(name, kPrefix.size(), prefix);
}

/// Writes the properties of this launch; their file becomes the first application argument. False
/// when they could not be written.
bool passProperties(const LaunchRequest& request, const LaunchRuntime& runtime,
                    LaunchCommand& command) {
  logMessage("[Extractor] Creating launch properties\n");
  PropertyBlock block = request.properties;
  const std::string appFolder = appFolderOf(request);
  addLaunchTimeProperties({.updateUrl = request.updateUrl,
                           .dynamicUpdateUrl = request.dynamicUpdateUrl,
                           .appFolder = appFolder,
                           .jreNameProperty = givenJava(request),
                           .launchedFromDynprops = request.launchedFromDynprops},
                          block);
  for (std::string& option :
       readRememberedOptions(runtime.rememberedOptionsPath, block, request.showsWaits))
    command.jvmOptions.push_back(std::move(option));
  const std::optional<std::string> file = writeLaunchProperties(
      block, request.ownFolder.empty() ? appFolder : request.ownFolder, request.showsWaits);
  if (!file) return false;
  command.applicationArguments.push_back(*file);
  if (request.launchClass == kLaunchApplication) {
    passOpenRequestsTo(besideProperties(*file, kOpenRequestsPrefix));
    noteFailureFile(besideProperties(*file, kStartFailurePrefix));
    command.tryFile =
        tryFileOf(request.ownFolder.empty() ? request.masterFolder : request.ownFolder, *file);
  }
  return true;
}

void passExtraArguments(std::FILE* launchFile, LaunchCommand& command) {
  const long count = readLong(launchFile, kArgumentsRecord.name);
  logMessage("[Extractor] Reading %ld extra args\n", count);
  for (std::string& argument : readLaunchEntries(launchFile, count, kArgumentsRecord.entryName))
    command.applicationArguments.push_back(std::move(argument));
}

/// Files that the user opened the application with are such arguments, too, behind the others: the
/// launch properties have just asked for all that came.
void passUserArguments(const LaunchRequest& request, LaunchCommand& command) {
  std::vector<std::string> own = request.userArguments;
  if (request.launchClass == kLaunchApplication)
    for (std::string& path : takeOpenedFiles()) own.push_back(std::move(path));
  logMessage("[Extractor] Appending %d command line args\n", static_cast<int>(own.size()));
  for (std::string& argument : own) command.applicationArguments.push_back(std::move(argument));
}

/// Of an updater that wants it: from the class path that the JVM begins with, an application has
/// what it would have if it had been started alone.
void passApplication(const LaunchRequest& request, const LaunchRuntime& runtime,
                     const LaunchHeader& header, const LaunchTrailer& trailer,
                     LaunchCommand& command) {
  const auto& options = trailer.jvmOptions;
  if (request.launchClass != kLaunchApplication ||
      std::find(options.begin(), options.end(), kWithApplicationOption) == options.end())
    return;
  const ChosenApplication application =
      addChosenApplication(request.masterFolder, header.appName, command);
  if (!application.wantsStartupArchive) return;
  const std::string& remembered = runtime.rememberedOptionsPath;
  addStartupArchive({.folder = remembered.substr(0, remembered.rfind('/')),
                     .javaHome = runtime.folder + kBundleSuffix + "/Contents/Home",
                     .applicationFolder = application.folder},
                    command);
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

}  // namespace

bool forceSpawn = false;

LaunchResult launch(const LaunchRequest& request) {
  logStartSection("Launching");
  logMessage("[Extractor] Launching '%s' from master folder '%s' of class %d using JRE '%s'\n",
             request.appFolderName.c_str(), request.masterFolder.c_str(), request.launchClass,
             givenJava(request).c_str());
  OwnedFile launchFile = openLaunchFile(joinPath(appFolderOf(request), kLaunchFileName));
  if (!launchFile) return {.status = std::nullopt, .exitStatus = kExitFailure};
  const LaunchHeader header = readLaunchHeader(launchFile.get());
  const std::optional<LaunchRuntime> runtime = chooseRuntime(request, header.appName);
  if (!runtime) return {.status = std::nullopt, .exitStatus = kExitFailure};

  LaunchCommand command;
  command.executable = runtime->executable;
  addMemoryOptions(header.jvmMemory, header.jvmStack, command);
  readClassPath(launchFile.get(), appFolderOf(request), command);
  if (!passProperties(request, *runtime, command))
    return {.status = std::nullopt, .exitStatus = kExitNoProperties};
  passExtraArguments(launchFile.get(), command);
  const LaunchTrailer trailer = readLaunchTrailer(launchFile.get(), header.version);
  command.classToRun = classToRun(request.launchClass, header, trailer);
  passApplication(request, *runtime, header, trailer, command);
  passUserArguments(request, command);
  logArguments(processArguments(command), request.launchClass);
  launchFile.reset();

  if (request.launchClass == kLaunchApplication)
    return {.status = startApplication(header.mainClass, runtime->folder, forceSpawn, command)};
  if (request.launchClass == kLaunchCompatibilityCheck)
    return {.status = runCompatibilityClass(command)};
  return {.status = kNothingLaunched};
}

void prepareLaunch(const LaunchRequest& request) {
  const OwnedFile launchFile = openLaunchFile(joinPath(appFolderOf(request), kLaunchFileName));
  if (launchFile) chooseRuntime(request, readLaunchHeader(launchFile.get()).appName);
}

bool isCompatible(const LaunchResult& result) { return result.status == kExitJreCompatible; }

}  // namespace quillory
