// Installing where this user may not write: the launcher runs itself with administrator rights,
// only to install, through the tool `elev_mac` of the bundle, and then once more as this user.
#pragma once
#include <string>

#include "launcher/bundle_paths.h"
#include "launcher/component_extraction.h"

namespace quillory {

/// What the elevated set-up finds around it. Assigned to by tests only, through ScopedReplace.
struct ElevationCalls {
  bool (*parentRunsThisExecutable)();
  /// Where the splash picture is put meanwhile: a folder that all users share.
  const char* temporaryFolder;
};
extern ElevationCalls elevationCalls;

/// Makes the directory of all users' applications for an elevated run, where the system has none.
/// Only the system may write there, as on systems that come with it.
void createDirectoryForAllUsers(const std::string& directory);

/// Ends the process with status 1 when elevation was tried already: in the elevated copy itself,
/// and in one that the launcher relaunched after it. Without this, prompts would follow each other
/// for ever.
void refuseSecondElevation(bool prepareOnly);

/// Extracts the tail's first two entries, and shows their picture in the splash from now on.
/// Nothing that is put into the shared folder is executed.
void extractSplashForElevation(const TailArchives& tail, const SplashOverride& splashOverride);

/// Runs `elev_mac`, then the launcher with its own arguments, and ends the process with status 0,
/// whatever became of the two; failures are in the log.
[[noreturn]] void doElevatedSetupAndLaunch(const std::string& appName, int argc, char** argv,
                                           bool isSilent, const Executable& exe);

}  // namespace quillory
