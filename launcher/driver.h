// The story of a start: parameters, tail, folders, decision, extraction, JRE, launch.
#pragma once
#include <string>

#include "launcher/elevated_setup.h"
#include "launcher/parent_process.h"

namespace quillory {

/// The arguments of a process, and what they say.
struct CommandLine {
  std::string exePath;  ///< argv[0] as passed, possibly relative
  int argCount;         ///< without argv[0], as `args` are
  char** args;
  int fullArgc;
  char** fullArgv;
  bool prepareOnly;
};

/// What a start finds around it.
struct Surroundings {
  /// Whether a launcher has started this process, which it does after an elevated set-up.
  bool (*isRelaunchedCopy)() = parentRunsThisExecutable;
  std::string sharedTemporaryFolder = kSharedTemporaryFolder;
};

/// Runs a whole start on the calling thread and ends the process, as extractWrapperTail() says.
[[noreturn]] void drive(const CommandLine& line, const Surroundings& surroundings = {});

/// Runs a whole start on the calling thread and ends the process: with status 0 after the
/// application has been started (or prepared, with `prepareOnly`), else as support/exit_status.h
/// says. `exePath` is argv[0] as passed, possibly relative; `argCount` and `args` are the arguments
/// without it, `fullArgc` and `fullArgv` with it.
[[noreturn]] void extractWrapperTail(char* exePath, int argCount, char** args, int fullArgc,
                                     char** fullArgv, bool prepareOnly);

/// Whether one of the arguments is exactly `silentParameter`; never for null or "".
bool isSilent(const char* silentParameter, int argCount, char** args);

}  // namespace quillory
