#include "java/launch_start.h"

#include <sys/wait.h>

#include "java/bundle_loader.h"
#include "java/jni_launch.h"
#include "java/jre_bundle.h"
#include "support/log.h"
#include "support/process.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr int kNoStatus = -1;

/// Starts the process: 0, or an error number.
int spawn(const std::vector<std::string>& arguments, pid_t& child) {
  closeLoggedFile();
  const std::vector<char*> pointers = argumentPointers(arguments);
  const int error = processCalls.spawn(&child, pointers[0], pointers.data(), getEnvP());
  if (error != 0) logMessage("Launch Error %d.\n", error);
  return error;
}

/// Its exit status, or kNoStatus when a signal ended it.
int waitForExit(pid_t child) {
  int status = 0;
  const pid_t ended = processCalls.waitFor(child, &status);
  return ended == child && WIFEXITED(status) ? WEXITSTATUS(status) : kNoStatus;
}

int launchInProcess(const std::string& mainClass, const std::string& jreHome,
                    const LaunchCommand& command) {
  logMessage("[Extractor] Force spawn is %d so attempting to launch via JNI\n", 0);
  logStartSection("JNI Launch\n");
  const int result = launchJavaJNI(
      mainClass.c_str(), jreHome.c_str(), static_cast<int>(command.jvmOptions.size()),
      argumentPointers(command.jvmOptions).data(), static_cast<int>(command.classPath.size()),
      argumentPointers(command.classPath).data(),
      static_cast<int>(command.applicationArguments.size()),
      argumentPointers(command.applicationArguments).data());
  logMessage("[Extractor] Return code for JNI launch was %d\n", result);
  logEndSection("JNI Launch\n");
  return result;
}

}  // namespace

std::int64_t startApplication(const std::string& mainClass, const std::string& jreFolder,
                              bool isSpawnForced, const LaunchCommand& command) {
  logMessage("[Extractor] JRE folder is %s\n", jreFolder.c_str());
  const std::string bundle = jreFolder + kBundleSuffix;
  loadOSXBundle(bundle.c_str());
  const std::string jreHome = bundle + "/Contents/Home";
  logMessage("[Extractor] Adjusted JRE folder is %s\n", jreHome.c_str());
  if (!isSpawnForced) {
    if (launchInProcess(mainClass, jreHome, command) == 0) return 0;
    logMessage("[Extractor] JNI launch failed. Attempting legacy spawn instead\n");
  }
  logMessage("[Extractor] Attempting spawn launch\n");
  logStartSection("Spawn launch\n");
  pid_t child = 0;
  return spawn(processArguments(command), child);
}

std::int64_t runCompatibilityClass(const LaunchCommand& command) {
  pid_t child = 0;
  if (spawn(processArguments(command), child) != 0) return kNoStatus;
  return waitForExit(child);
}

}  // namespace quillory
