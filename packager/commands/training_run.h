// A run of an application that tells which classes of Java it needs.
#pragma once
#include <string>
#include <vector>

#include "formats/launch_file_format.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// An application as an installation has it, with its launch file, and the runtime that runs it.
struct UnpackedApplication {
  std::string javaHome;
  std::string folder;
};

/// The program and its arguments that start the application as a start does, without launcher and
/// updater, and have its JVM write the classes that it loads into the file `list`. `arguments`
/// are the user's; an application that gets the path of its launch properties is handed
/// `properties`. What the JVM needs before that is not started: an agent of the main jar.
std::vector<std::string> trainingCommand(const LaunchFile& launch,
                                         const UnpackedApplication& application,
                                         const std::string& list, const std::string& properties,
                                         const std::vector<std::string>& arguments);

/// The folder in which it runs: its own, the user's home folder, or "" for ours.
std::string trainingFolder(const LaunchFile& launch, const UnpackedApplication& application);

/// Starts it, waits until the user has ended it, and returns the classes of the runtime that it
/// has loaded, sorted. What it prints goes to standard error. `workFolder` is for files that
/// nobody needs afterwards. Throws PackError when it cannot be started, does not end with the
/// status 0, or has left no classes.
std::vector<std::string> trainingRun(const UnpackedApplication& application,
                                     const std::vector<std::string>& arguments,
                                     const std::string& workFolder, Reporter& reporter);

}  // namespace quillory::pack
