// The launch file "QuilloryLaunch" of an installed version folder. docs/formats/launch-file.md has
// the records. Streams are borrowed, and each call continues where the one before stopped. A value
// that is missing because the file ends reads as "", 0 or false.
#pragma once
#include <cstdio>
#include <string>
#include <vector>

#include "formats/launch_file_format.h"

namespace quillory {

/// Whether `folder` has a launch file that is not empty.
bool holdsLaunchFile(const std::string& folder);

/// Records 1 to 8.
struct LaunchHeader {
  int version = 0;
  std::string mainClass;
  std::string mainClassOnUpdate;
  std::string appName;
  std::string icns;
  bool urlRequired = false;
  int jvmMemory = 0;  ///< megabytes; below 1: none given
  int jvmStack = 0;   ///< megabytes; below 1: none given
};
/// They stand at the beginning of the file.
LaunchHeader readLaunchHeader(std::FILE* stream);

/// The values behind a count record: `count` of them, fewer where the file ends earlier. Memory is
/// taken for what is there, never for what the count claims.
std::vector<std::string> readLaunchEntries(std::FILE* stream, long count, const char* entryName);

/// The records behind the extra arguments, as far as `version` has them.
struct LaunchTrailer {
  bool hasCompatibilityClass = false;
  std::string compatibilityClass;
  std::vector<std::string> jvmOptions;  ///< of the updater, or for it: the launch file's page
};
/// Nothing of it is read where `version`, which the header has, is too low for it.
LaunchTrailer readLaunchTrailer(std::FILE* stream, int version);
/// The same, of an application's file: of these records its options alone are of use before it
/// runs.
std::vector<std::string> readLaunchOptions(std::FILE* stream, int version);

}  // namespace quillory
