#include "launcher/elevated_setup.h"

#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "launcher/prepare_only.h"
#include "launcher/splash_override.h"
#include "support/log.h"
#include "support/opened_files.h"
#include "support/platform.h"
#include "support/spawner.h"
#include "ui/splash.h"

namespace quillory {
namespace {

constexpr char kFrame[] = "[SUDO] ==============================================\n";

/// What the user gave us, for another program.
void addOwnArguments(std::vector<std::string>& arguments, int argc, char** argv) {
  arguments.insert(arguments.end(), argv + 1, argv + argc);
}

void logBanner(const char* line) {
  logMessage("%s", kFrame);
  logMessage("%s", line);
  logMessage("%s", kFrame);
}

/// The set-up's own outcome does not change what happens next, but a person has to find it.
void explainStatus(int status) {
  if (status < 0) {
    logMessage("[SUDO] elev_mac could not be started: nothing has been installed\n");
  } else if (status > 0) {
    logMessage("[SUDO] elev_mac ended with status %d: elevation was denied, or set-up failed\n",
               status);
  }
}

int runBehindSplash(const Tool& tool, bool isSilent) {
  if (isSilent) return tool.runAndWait();
  splash::showSplash();
  splash::setProgress(splash::kProgressIndefinite);
  const int status = tool.runAndWait();
  splash::hideSplash();
  return status;
}

void runElevated(const std::string& appName, int argc, char** argv, bool isSilent,
                 const Executable& exe) {
  logMessage("[SUDO] Elevation required.\n");
  logMessage("[SUDO] On OS X, UI-based elevation utility is required. Using bundled 'elev_mac'\n");
  const std::string path = exe.resource("elev_mac");
  logMessage("[SUDO] Elev_mac path is %s\n", path.c_str());

  std::vector<std::string> arguments = {path, "--prompt=" + appName, exe.absolutePath};
  addOwnArguments(arguments, argc, argv);
  arguments.emplace_back(kPrepareOnlyArgument);
  const Tool tool(std::move(arguments));

  logBanner("[SUDO] ======      Launching elevated setup    ======\n");
  explainStatus(runBehindSplash(tool, isSilent));
  logMessage("[SUDO] Elevated setup complete\n");
}

void relaunch(int argc, char** argv, const Executable& exe) {
  std::vector<std::string> arguments = {exe.absolutePath};
  addOwnArguments(arguments, argc, argv);
  // The copy gets no event for what this process was opened with.
  for (std::string& path : takeOpenedFiles()) arguments.push_back(std::move(path));
  const Tool copy(std::move(arguments));
  platformCalls.presence.leaveDock();
  logBanner("[SUDO] ======      Relaunching post setup      ======\n");
  copy.runAndWait();
  logMessage("[SUDO] Relaunch complete\n");
}

}  // namespace

void createDirectoryForAllUsers(const std::string& directory) {
  constexpr mode_t kOnlyOwnerWrites = 0755;
  for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
    const std::string folder = directory.substr(0, end);
    // Every user's applications are in there: whoever may write could exchange them.
    // mkdir() alone would leave it to the umask whether users can look inside.
    if (mkdir(folder.c_str(), kOnlyOwnerWrites) == 0) {
      logMessage("[Extractor] Created %s\n", folder.c_str());
      chmod(folder.c_str(), kOnlyOwnerWrites);
    }
    if (end == directory.npos) return;
  }
}

bool mayElevate(bool isElevatedCopy, bool isRelaunchedCopy) {
  if (isElevatedCopy) {
    logError("[SUDO] The elevated setup cannot write to the install location either. Giving up.\n");
    return false;
  }
  if (isRelaunchedCopy) {
    logError(
        "[SUDO] The install location still cannot be written after an elevated setup. Will not "
        "elevate again.\n");
    return false;
  }
  return true;
}

ExtractionResult extractSplashForElevation(const TailArchives& tail,
                                           const SplashOverride& splashOverride,
                                           const std::string& folder) {
  // Without an LZMA tool: the only one at hand would be the file just put there.
  for (int i = 0; i < 2; ++i) {
    ExtractionResult result = extractTailEntry(tail, {}, folder);
    if (result.isFailure()) return result;
  }
  const std::string picture = joinPath(folder, kSplashPictureName);
  saveOverrideImageIfAllowed(splashOverride.canOverride, splashOverride.image, picture);
  logMessage("[Extractor] Native Splash PNG path is %s\n", picture.c_str());
  logMessage("[Extractor] Configuring splash\n");
  splash::configureSplash(picture.c_str());
  return {};
}

void doElevatedSetupAndLaunch(const std::string& appName, int argc, char** argv, bool isSilent,
                              const Executable& exe) {
  runElevated(appName, argc, argv, isSilent, exe);
  // Said twice by intent: once for the tool, once for the set-up as a whole.
  logMessage("[SUDO] Elevated setup complete\n");
  relaunch(argc, argv, exe);
}

}  // namespace quillory
