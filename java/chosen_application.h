// What of an application a JVM has to know from its beginning, when the updater, which chooses the
// version, is still to run: the version that it will most likely choose is read here. The updater
// says so where it was another one (updater/Application.java).
#pragma once
#include <string>
#include <vector>

#include "java/launch_command.h"

namespace quillory {

/// What was found of it.
struct ChosenApplication {
  std::string folder;  ///< "" without one
  bool wantsStartupArchive = false;
};

/// Adds the newest version of `appName` in `masterFolder` to a command whose memory options, class
/// path and remembered options are there: its class path behind the updater's, and in front of the
/// remembered options, which win, its own ones, the folder of its native libraries, and
/// "-Dquillory.application=<its folder>". That one is there also without an application, and then
/// says "". What the application's process is to be like, its directory and its environment, is
/// noted in the command. A version that the remembered options pass over
/// ("-Dquillory.passed.over=<folder>/...") does not count.
ChosenApplication addChosenApplication(const std::string& masterFolder, const std::string& appName,
                                       LaunchCommand& command);

}  // namespace quillory
