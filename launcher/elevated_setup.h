// Installing where this user may not write: the launcher runs itself with administrator rights,
// only to install, through the tool `elev_mac` of the bundle, and then once more as this user.
#pragma once
#include <string>

#include "launcher/bundle_paths.h"
#include "launcher/component_extraction.h"

namespace quillory {

/// Where the splash picture is put while the elevated set-up runs: a folder that all users share.
inline constexpr char kSharedTemporaryFolder[] = "/tmp";

/// Makes the directory of all users' applications for an elevated run, where the system has none.
/// Only the system may write there, as on systems that come with it.
void createDirectoryForAllUsers(const std::string& directory);

/// Whether elevation may still help. Not, with an error in the log, when it was tried already: in
/// the elevated copy itself, and in one that the launcher relaunched after it. Without this,
/// prompts would follow each other for ever.
bool mayElevate(bool isElevatedCopy, bool isRelaunchedCopy);

/// Extracts the tail's first two entries into `folder`, and shows their picture in the splash from
/// now on. Nothing that is put into the shared folder is executed. Nothing is shown after a
/// failure, which is the result.
ExtractionResult extractSplashForElevation(const TailArchives& tail,
                                           const SplashOverride& splashOverride,
                                           const std::string& folder = kSharedTemporaryFolder);

/// Runs `elev_mac`, then the launcher with its own arguments, which start the application: this
/// process has nothing left to do, whatever became of the two. Failures are in the log.
void doElevatedSetupAndLaunch(const std::string& appName, int argc, char** argv, bool isSilent,
                              const Executable& exe);

}  // namespace quillory
