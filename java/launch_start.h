// Starting what a launch command describes.
#pragma once
#include <cstdint>
#include <string>

#include "java/launch_command.h"

namespace quillory {

/// Loads the bundle of the private JRE at `jreFolder` and runs `mainClass` in a JVM of this
/// process; where that fails, or when the spawn is forced, starts the command as a process and
/// does not wait for it, unless its end is to be noted. 0 when the application has run or was
/// started, else an error number.
std::int64_t startApplication(const std::string& mainClass, const std::string& jreFolder,
                              bool isSpawnForced, const LaunchCommand& command);

/// Runs the command as a process and returns its exit status (0 to 255); -1 when it could not be
/// started or a signal ended it.
std::int64_t runCompatibilityClass(const LaunchCommand& command);

}  // namespace quillory
