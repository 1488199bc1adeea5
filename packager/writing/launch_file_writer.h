// Writes the launch file "QuilloryLaunch" of a version folder. docs/formats/launch-file.md has the
// records; formats/launch_file.h reads them.
#pragma once
#include <string>
#include <vector>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

struct LaunchFile {
  std::string mainClass;
  std::string mainClassOnUpdate;
  /// File name of the copy of `java` that runs the application.
  std::string appName;
  std::string icns;
  bool urlRequired = false;
  /// Largest and initial heap in MiB; 0 leaves them to the JVM.
  int maximumHeap = 0;
  int initialHeap = 0;
  std::vector<std::string> classPath;
  std::vector<std::string> arguments;
  std::string compatibilityClass;
  std::vector<std::string> jvmOptions;
  bool mustFork = false;
};

/// Writes version 6, the newest: the one with all records.
void writeLaunchFile(ByteSink& sink, const LaunchFile& file);
std::string launchFileBytes(const LaunchFile& file);

}  // namespace quillory::pack
