// Functions for programs outside of this tree, which know them by these names and signatures.
// Nothing in the launcher calls them: behind each stands one over std::string, named with it, whose
// contract is its own.
#pragma once
#include <cstdint>

#include "formats/property_block.h"

namespace quillory {

// Of java/jre_inspection.h and java/jre_bundle.h. Paths of tools come as new blocks of at least
// kPathCapacity bytes, other texts as new blocks; free() releases them.

/// javaOf(); two names for the same thing.
char* getJavaExecutable(const char* jreFolder);
char* getJavaCmdlineExecutable(const char* jreFolder);
/// unpack200Of().
char* getUnpack200Executable(const char* jreFolder);
/// javaVersionOf(); never null.
char* getJavaVersion(const char* javaPath);
/// meetsVersionRequirement(); false, with a line in the log, for a requirement of null.
bool jreMatchesVersionRequirement(const char* javaPath, const char* requiredVersion);
/// replaceTrustStore().
int overrideCACerts(const char* source, const char* jreHome);
/// prepareJreBundle(): the path of the alias.
char* initOSXJRE(const char* bundlePath);

/// Lets the version patcher at `tool` write `name` and version 4.0.0.0 into `file`; logs its exit
/// status. (The launcher has no program that it would patch on the systems that it runs on.)
void callVerPatchOn(const char* tool, const char* file, const char* name);

// launch() of java/launch_flow.h. They end the process where it gives no status.

/// `jre` is the name of the private JRE for launch class 0, and the path of a `java` for launch
/// class 1. The parameters without a name are not used.
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

/// Launch class 1: whether `javaPath` is compatible.
bool checkAppJreCompatibility(const char* masterFolder, const PropertyBlock& properties,
                              int argCount, char** args, const char* appFolderName,
                              const char* updateUrl, const char* dynamicUpdateUrl,
                              const char* javaPath, const char* launchedFromDynprops);

/// newLaunchPropertiesPath() of java/launch_properties.h: writes to `dst` (kPathCapacity bytes) and
/// returns it; "" when the path does not fit.
char* makeLaunchPropertiesFile(char* dst, const char* folder);

// Of java/jni_launch.h.

/// openJvmLibrary().
void* loadJVMLibrary(const char* jreHome);
/// classPathOption() in a new block, to be released with free().
char* getClassPathFor(int count, const char* const* entries);
/// runInThisProcess().
int launchJavaJNI(const char* mainClass, const char* jreHome, int optionCount,
                  const char* const* options, int classPathCount, const char* const* classPath,
                  int argumentCount, const char* const* arguments);

}  // namespace quillory
