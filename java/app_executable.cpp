#include "java/app_executable.h"

#include <cstdio>
#include <vector>

#include "support/files.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/owned.h"

namespace quillory {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

bool isFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

bool copyContent(std::FILE* source, OutputFile& copy) {
  std::vector<char> block(kBlockBytes);
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), source))
    if (!copy.write(block.data(), count)) return false;
  return std::ferror(source) == 0 && copy.stream() != nullptr && std::fflush(copy.stream()) == 0;
}

/// False, with a log line, when the copy cannot be made whole.
bool copyProgram(const std::string& source, const std::string& target) {
  logMessage("[Extractor] Copying FILE %s\n", target.c_str());
  const OwnedFile from(std::fopen(source.c_str(), "rb"));
  if (from == nullptr) {
    logMessage("[Extractor] *************************** Unable to open source file for copy %s\n",
               source.c_str());
    return false;
  }
  // Beside its place first: two starts at the same time do not mix their bytes.
  OutputFile copy(target, ExactMode{installationMode()});
  if (!copyContent(from.get(), copy)) {
    logMessage(
        "[Extractor] *************************** Unable to open destination file for copy %s\n",
        target.c_str());
    return false;
  }
  // Where it cannot get its name the start of the program will fail, and say so.
  copy.commit();
  return true;
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

  if (!copyProgram(java, executable)) logError("Error setting app binary executable!\n");
  return executable;
}

}  // namespace quillory
