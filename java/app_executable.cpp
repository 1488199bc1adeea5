#include "java/app_executable.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

constexpr mode_t kForEveryone = 0777;

bool isFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

/// Copies the content; failures are logged with the name that the copy would have got.
bool copyContent(const std::string& source, const std::string& copy, const std::string& finalName) {
  logMessage("[Extractor] Copying FILE %s\n", finalName.c_str());
  if (access(source.c_str(), R_OK) != 0) {
    logMessage("[Extractor] *************************** Unable to open source file for copy %s\n",
               source.c_str());
    return false;
  }
  std::error_code error;
  std::filesystem::copy_file(source, copy, error);
  if (!error) return true;
  logMessage(
      "[Extractor] *************************** Unable to open destination file for copy %s\n",
      finalName.c_str());
  return false;
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

  // The process id keeps two starts at the same time apart. What a killed one left is in the way.
  const std::string copy = binFolder + "/.java-" + std::to_string(getpid());
  unlink(copy.c_str());
  const bool isCopied = copyContent(java, copy, executable);
  const bool isRunnable = isCopied && chmod(copy.c_str(), kForEveryone) == 0;
  if (!isRunnable) logError("Error setting app binary executable!\n");
  if (!isRunnable || rename(copy.c_str(), executable.c_str()) != 0) unlink(copy.c_str());
  return executable;
}

}  // namespace quillory
