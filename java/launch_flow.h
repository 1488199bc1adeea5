// From a launch file to a running Java application.
#pragma once
#include <cstdint>

#include "formats/property_block.h"

namespace quillory {

/// Skip the in-process launch. Written where the dynamic parameters are read, and read by the
/// launch flow; both on the run thread.
extern bool forceSpawn;

inline constexpr int kLaunchApplication = 0;
inline constexpr int kLaunchCompatibilityCheck = 1;

/// Reads the launch file of `appFolderName` inside `masterFolder`, writes the launch properties and
/// starts the application: inside this process, or else as a process of its own (launch class 0);
/// or runs its JRE-compatibility class under the `java` at `jre` and returns its exit status, -1
/// for a signal or a failed start (launch class 1). Any other class returns -1.
///
/// For launch class 0 `jre` is the name under which JRE folders are found, and the result is that
/// of the start. Ends the process with status 1 without a launch file or a private JRE, with
/// kExitNoProperties without launch properties. The parameters without a name are not used.
std::int64_t launchFromLaunchFile(const char* masterFolder, const PropertyBlock& properties,
                                  int argCount, char** args, const char* appFolderName,
                                  const char* updateUrl, const char* dynamicUpdateUrl,
                                  const char* jre, int launchClass, const char*, bool, const char*,
                                  const char* launchedFromDynprops, bool, const char*);

/// Launch class 0.
std::int64_t launchApp(const char* masterFolder, const PropertyBlock& properties, int argCount,
                       char** args, const char* appFolderName, const char* updateUrl,
                       const char* dynamicUpdateUrl, const char* jre, const char*, bool,
                       const char*, const char* launchedFromDynprops, bool, const char*);

/// Launch class 1: whether the compatibility class says kExitJreCompatible.
bool checkAppJreCompatibility(const char* masterFolder, const PropertyBlock& properties,
                              int argCount, char** args, const char* appFolderName,
                              const char* updateUrl, const char* dynamicUpdateUrl,
                              const char* javaPath, const char* launchedFromDynprops);

}  // namespace quillory
