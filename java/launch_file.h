// The launch file "QuilloryLaunch" of an installed version folder. docs/formats/launch-file.md has
// the records.
#pragma once
#include <cstdio>
#include <string>
#include <vector>

namespace quillory {

inline constexpr char kLaunchFileName[] = "QuilloryLaunch";

/// Records 1 to 8.
struct LaunchHeader {
  int version = 0;
  std::string mainClass;
  std::string mainClassOnUpdate;
  std::string appName;
  std::string icns;
  bool urlRequired = false;
  int jvmMemory = 0;
  int jvmStack = 0;
};
LaunchHeader readLaunchHeader(std::FILE* stream);

/// A counted group: its count, then that many values, ending early where the file does.
std::vector<std::string> readLaunchList(std::FILE* stream, const char* countName,
                                        const char* entryName);

/// The records behind the extra arguments, as far as the version has them.
struct LaunchTrailer {
  bool hasCompatibilityClass = false;
  std::string compatibilityClass;
};
LaunchTrailer readLaunchTrailer(std::FILE* stream, int version);

}  // namespace quillory
