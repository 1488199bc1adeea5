// What is started, in the two forms in which it can be: the argument list of a `java` process, and
// the lists for a JVM in this process.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory {

struct LaunchCommand {
  std::string executable;
  std::vector<std::string> jvmOptions;    ///< "-Xmx", "-Xms", then the remembered options
  std::size_t memoryOptionCount = 0;      ///< how many of these are "-Xmx" and "-Xms"
  std::vector<std::string> classPath;     ///< absolute paths
  std::string classPathText;              ///< the same, joined with ':'
  std::optional<std::string> classToRun;  ///< of the process; none: its list ends there
  std::vector<std::string> applicationArguments;
  /// "NAME=value", set before the application runs, in whichever process that is.
  std::vector<std::string> environment;
  std::string directory;  ///< where the application runs; "" for where the launcher was started
  std::string tryFile;    ///< where the end of the application is noted (java/trial_end.h), or ""
};

/// "-Xmx<memory>m" and "-Xms<stack>m", each for a number of at least 1. The stack record feeds the
/// initial heap by intent: launch files have been written for that.
void addMemoryOptions(int memory, int stack, LaunchCommand& command);

/// The class path of `entries`, which are relative to `appFolder`.
void setClassPath(const std::string& appFolder, const std::vector<std::string>& entries,
                  LaunchCommand& command);

/// The argument list of the process, the executable first.
std::vector<std::string> processArguments(const LaunchCommand& command);

}  // namespace quillory
