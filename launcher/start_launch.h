// From a start that has everything in its place to the launch.
#pragma once
#include <string>

#include "java/launch_flow.h"
#include "launcher/start.h"

namespace quillory {

/// What is launched out of the updater in the folder of that name: the application, as far as any
/// launch needs it. It borrows from `start`.
LaunchRequest launchOf(const Start& start, const std::string& updaterFolder);

/// Closes what the start holds and launches the application, unless this run only prepares for it.
/// Ends the process.
[[noreturn]] void launchAndEnd(Start& start, const std::string& guFolderName);

}  // namespace quillory
