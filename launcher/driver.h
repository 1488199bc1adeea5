// The story of a start: parameters, tail, folders, decision, extraction, JRE, launch.
#pragma once

namespace quillory {

/// Runs a whole start on the calling thread and ends the process: with status 0 after the
/// application has been started (or prepared, with `prepareOnly`), else as support/exit_status.h
/// says. `exePath` is argv[0] as passed, possibly relative; `argCount` and `args` are the arguments
/// without it, `fullArgc` and `fullArgv` with it.
[[noreturn]] void extractWrapperTail(char* exePath, int argCount, char** args, int fullArgc,
                                     char** fullArgv, bool prepareOnly);

/// Whether one of the arguments is exactly `silentParameter`; never for null or "".
bool isSilent(const char* silentParameter, int argCount, char** args);

}  // namespace quillory
