#include "java/for_embedders.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "java/jni_launch.h"
#include "java/jre_bundle.h"
#include "java/jre_inspection.h"
#include "java/launch_flow.h"
#include "java/launch_properties.h"
#include "support/log.h"
#include "support/paths.h"
#include "support/spawner.h"
#include "support/strings.h"

namespace quillory {
namespace {

// Callers may go on writing into the block up to the usual size of a path buffer.
char* allocPath(const std::string& path) {
  const std::size_t size = std::max(path.size() + 1, kPathCapacity);
  char* const block = static_cast<char*>(std::calloc(1, size));
  if (block != nullptr) std::memcpy(block, path.data(), path.size());
  return block;
}

std::string textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

std::vector<std::string> textsOf(int count, const char* const* texts) {
  return {texts, texts + std::max(count, 0)};
}

// For functions that have no way to say that nothing could be launched.
std::int64_t statusOrExit(const LaunchResult& result) {
  if (!result.status) std::exit(result.exitStatus);
  return *result.status;
}

}  // namespace

char* getJavaExecutable(const char* jreFolder) { return allocPath(javaOf(jreFolder)); }

char* getJavaCmdlineExecutable(const char* jreFolder) { return allocPath(javaOf(jreFolder)); }

char* getUnpack200Executable(const char* jreFolder) { return allocPath(unpack200Of(jreFolder)); }

char* getJavaVersion(const char* javaPath) { return allocCopy(javaVersionOf(javaPath).c_str()); }

bool jreMatchesVersionRequirement(const char* javaPath, const char* requiredVersion) {
  if (requiredVersion != nullptr) return meetsVersionRequirement(javaPath, requiredVersion);
  (void)javaVersionOf(javaPath);  // Asked all the same: the log shows what there was.
  logMessage("[Extractor] Versions for JREs could not be detected (%d,%d)\n", 0, 1);
  return false;
}

int overrideCACerts(const char* source, const char* jreHome) {
  return replaceTrustStore(source, jreHome);
}

void callVerPatchOn(const char* tool, const char* file, const char* name) {
  const OwnedSpawner spawner =
      spawnerOf({tool, file,  "4.0.0.0",     "/s",     "description",    name, "/s", "ProductName",
                 name, "/pv", "4.0.0.0",     "/s",     "LegalCopyright", " ",  "/s", "Company",
                 " ",  "/s",  "FullVersion", "4.0.0.0"});
  logMessage("[VerPath] Returned %d\n", runSpawnerAndWait(spawner.get()));
}

char* initOSXJRE(const char* bundlePath) { return allocCopy(prepareJreBundle(bundlePath).c_str()); }

std::int64_t launchFromLaunchFile(const char* masterFolder, const PropertyBlock& properties,
                                  int argCount, char** args, const char* appFolderName,
                                  const char* updateUrl, const char* dynamicUpdateUrl,
                                  const char* jre, int launchClass, const char*, bool, const char*,
                                  const char* launchedFromDynprops, bool, const char*) {
  LaunchRequest request = {.masterFolder = textOrEmpty(masterFolder),
                           .appFolderName = textOrEmpty(appFolderName),
                           .properties = properties,
                           .userArguments = textsOf(argCount, args),
                           .updateUrl = textOrEmpty(updateUrl),
                           .launchedFromDynprops = textOrEmpty(launchedFromDynprops),
                           .launchClass = launchClass};
  if (dynamicUpdateUrl != nullptr) request.dynamicUpdateUrl = dynamicUpdateUrl;
  (launchClass == kLaunchCompatibilityCheck ? request.javaToCheck : request.jreName) =
      textOrEmpty(jre);
  return statusOrExit(launch(request));
}

std::int64_t launchApp(const char* masterFolder, const PropertyBlock& properties, int argCount,
                       char** args, const char* appFolderName, const char* updateUrl,
                       const char* dynamicUpdateUrl, const char* jre, const char* unusedText,
                       bool unusedFlag, const char* unusedText2, const char* launchedFromDynprops,
                       bool unusedFlag2, const char* unusedText3) {
  return launchFromLaunchFile(masterFolder, properties, argCount, args, appFolderName, updateUrl,
                              dynamicUpdateUrl, jre, kLaunchApplication, unusedText, unusedFlag,
                              unusedText2, launchedFromDynprops, unusedFlag2, unusedText3);
}

bool checkAppJreCompatibility(const char* masterFolder, const PropertyBlock& properties,
                              int argCount, char** args, const char* appFolderName,
                              const char* updateUrl, const char* dynamicUpdateUrl,
                              const char* javaPath, const char* launchedFromDynprops) {
  return launchFromLaunchFile(masterFolder, properties, argCount, args, appFolderName, updateUrl,
                              dynamicUpdateUrl, javaPath, kLaunchCompatibilityCheck, nullptr, false,
                              nullptr, launchedFromDynprops, false, nullptr) == kExitJreCompatible;
}

char* makeLaunchPropertiesFile(char* dst, const char* folder) {
  const std::string path = newLaunchPropertiesPath(folder);
  if (path.size() >= kPathCapacity) {
    logError("[Extractor] Path too long: %s\n", path.c_str());
    return setPath(dst, "");
  }
  return setPath(dst, path.c_str());
}

void* loadJVMLibrary(const char* jreHome) { return openJvmLibrary(jreHome); }

char* getClassPathFor(int count, const char* const* entries) {
  return allocCopy(classPathOption(textsOf(count, entries)).c_str());
}

int launchJavaJNI(const char* mainClass, const char* jreHome, int optionCount,
                  const char* const* options, int classPathCount, const char* const* classPath,
                  int argumentCount, const char* const* arguments) {
  return runInThisProcess({.mainClass = mainClass,
                           .jreHome = jreHome,
                           .jvmOptions = textsOf(optionCount, options),
                           .classPath = textsOf(classPathCount, classPath),
                           .arguments = textsOf(argumentCount, arguments)});
}

}  // namespace quillory
