#include "java/app_executable.h"

#include <filesystem>

#include "install/installation_lock.h"
#include "install/leftovers.h"
#include "java/whole_copy.h"
#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

bool isFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

// <master folder>/<JRE folder>/bin
std::string masterFolderOf(const std::string& binFolder) {
  return std::filesystem::path(binFolder).parent_path().parent_path().string();
}

}  // namespace

std::string provideAppExecutable(const std::string& binFolder, const std::string& appName) {
  const std::string java = binFolder + "/java";
  if (!isFileName(appName)) {
    logError("[Extractor] App Name '%s' is no file name. Using %s\n", appName.c_str(),
             java.c_str());
    return java;
  }
  const std::string executable = binFolder + "/" + appName;
  if (doesFileExist(executable.c_str())) return executable;

  InstallationLock lock;
  // Nobody else is copying: what lies there beside its place was cut short.
  if (lock.tryToTake(masterFolderOf(binFolder))) clearUnfinishedFiles(binFolder);
  // Beside its place first: two starts at the same time do not mix their bytes.
  if (copyWhole(java, {executable, executable, ExactMode{installationMode()}})) return executable;
  if (usesOnlyTrusted()) return java;
  logError("Error setting app binary executable!\n");
  return executable;
}

}  // namespace quillory
