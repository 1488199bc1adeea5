// The story of a start: parameters, tail, folders, decision, extraction, JRE, launch.
#pragma once
#include <functional>
#include <string>

#include "install/install_locations.h"
#include "launcher/elevated_setup.h"
#include "launcher/parent_process.h"

namespace quillory {

/// The arguments of the process, `args` without its name and `fullArgv` with it.
struct CommandLine {
  int argCount = 0;
  char** args = nullptr;
  int fullArgc = 0;
  char** fullArgv = nullptr;
  bool prepareOnly = false;
};

/// What a start finds around it; by default what is really there.
struct StartSurroundings {
  std::function<std::string()> homeFolder = homeFolderOfUser;  ///< see install_locations.h
  /// Whether a launcher has started this process, which it does after an elevated set-up.
  std::function<bool()> isRelaunchedCopy = parentRunsThisExecutable;
  /// Where the splash picture is put while an elevated set-up runs.
  std::string sharedTemporaryFolder = kSharedTemporaryFolder;
};

/// Runs a whole start on the calling thread and ends the process: with status 0 after the
/// application has been started (or prepared, with `prepareOnly`), else as support/exit_status.h
/// says. `exePath` is argv[0] as passed, possibly relative.
[[noreturn]] void runStart(const std::string& exePath, const CommandLine& line,
                           const StartSurroundings& surroundings = {});

/// runStart() where nothing else is around it. `argCount` and `args` are the arguments without
/// argv[0], `fullArgc` and `fullArgv` with it.
[[noreturn]] void extractWrapperTail(char* exePath, int argCount, char** args, int fullArgc,
                                     char** fullArgv, bool prepareOnly);

/// Whether one of the arguments is exactly `silentParameter`; never for null or "".
bool isSilent(const char* silentParameter, int argCount, char** args);

}  // namespace quillory
