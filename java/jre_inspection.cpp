#include "java/jre_inspection.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "support/command_output.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/spawner.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr mode_t kEverythingForEveryone = 0777;

// Callers may go on writing into the block up to the usual size of a path buffer.
char* allocPath(const std::string& path) {
  const std::size_t size = std::max(path.size() + 1, kPathCapacity);
  char* const block = static_cast<char*>(std::calloc(1, size));
  if (block != nullptr) std::memcpy(block, path.data(), path.size());
  return block;
}

std::string binFolder(const char* jreFolder) {
  return std::string(jreFolder) + "/Contents/Home/bin";
}

char* allocJava(const char* jreFolder) {
  const std::string java = binFolder(jreFolder) + "/java";
  if (chmod(java.c_str(), kEverythingForEveryone) != 0)
    logError("Error setting java to executable!\n");
  return allocPath(java);
}

// The answer of `java -version`, or null.
OwnedText askForVersion(const char* javaPath) {
  if (!isSafeInShellQuotes(javaPath)) return OwnedText(runProgramGetOutput({javaPath, "-version"}));
  // No redirection: a java that answers on standard error only is taken for one without a version.
  const std::string command = '"' + std::string(javaPath) + "\" -version";
  return OwnedText(runCommandGetOutput(command.c_str()));
}

// "8" of `java version "1.8.0_202"`, and "0" for everything of another form.
std::string secondComponent(const char* answer) {
  const char* const quote = std::strchr(answer, '"');
  if (quote == nullptr) {
    logMessage("[JavaCheck] Version command result for JRE, first quote is null\n");
    return "0";
  }
  const char* const firstDot = std::strchr(quote, '.');
  if (firstDot == nullptr) {
    logMessage("[JavaCheck] Version command result for JRE, first dot is null\n");
    return "0";
  }
  const char* const second = firstDot + 1;
  logMessage("[JavaCheck] Version command result for JRE, first ver is %s\n", second);
  const char* const secondDot = std::strchr(second, '.');
  if (secondDot == nullptr) {
    logMessage("[JavaCheck] Version command result for JRE, second dot is null\n");
    return "0";
  }
  // What is shown is the text from the dot on after it was cut there: nothing.
  logMessage("[JavaCheck] Version command result for JRE, second ver is %s\n", "");
  return std::string(second, secondDot);
}

}  // namespace

char* getJavaExecutable(const char* jreFolder) { return allocJava(jreFolder); }

char* getJavaCmdlineExecutable(const char* jreFolder) { return allocJava(jreFolder); }

char* getUnpack200Executable(const char* jreFolder) {
  const std::string bin = binFolder(jreFolder);
  const std::string unpack200 = bin + "/unpack200";
  std::printf("[Locating UP200] %s\n", jreFolder);
  std::printf("[Locating UP200] %s\n", bin.c_str());
  std::printf("[Locating UP200] Result is %s\n", unpack200.c_str());
  if (chmod(unpack200.c_str(), kEverythingForEveryone) != 0)
    logError("Error setting unpack200 to executable!\n");
  return allocPath(unpack200);
}

char* getJavaVersion(const char* javaPath) {
  const OwnedText answer = askForVersion(javaPath);
  if (answer == nullptr) {
    logMessage(
        "[JavaCheck] Version command result for JRE is empty, problem running version check?\n");
    return allocCopy("0");
  }
  logMessage("[JavaCheck] Version command result for JRE is %s\n", answer.get());
  return allocCopy(secondComponent(answer.get()).c_str());
}

bool jreMatchesVersionRequirement(const char* javaPath, const char* requiredVersion) {
  const OwnedText version(getJavaVersion(javaPath));
  if (version == nullptr || requiredVersion == nullptr) {
    logMessage("[Extractor] Versions for JREs could not be detected (%d,%d)\n", version == nullptr,
               requiredVersion == nullptr);
    return false;
  }
  logMessage("[Extractor] Checking JRE version requirements: %s vs required %s\n", version.get(),
             requiredVersion);
  return std::strtol(version.get(), nullptr, 10) >= std::strtol(requiredVersion, nullptr, 10);
}

bool isHealthyJre(const char* jreFolder) {
  const std::string folder = jreFolder;
  return doesFileExist((folder + "/bin/java").c_str()) &&
         doesFileExist((folder + "/lib/rt.jar").c_str());
}

bool holdsJava(const char* folder) {
  for (const char* const java :
       {"/Contents/Home/bin/java", "/Contents/Home/jre/bin/java", "/bin/java"})
    if (access((std::string(folder) + java).c_str(), F_OK) == 0) return true;
  return false;
}

void regenerateSharedArchive(const char* jreFolder) {
  const OwnedText java(getJavaExecutable(jreFolder));
  runSpawnerAndWait(spawnerOf({java.get(), "-Xshare:dump"}).get());
}

int overrideCACerts(const char* source, const char* jreHome) {
  if (!doesFileExist(source)) {
    logMessage("[Extractor] Override CACerts does not exist.\n");
    return 0;
  }
  const std::string target = std::string(jreHome) + "/lib/security/cacerts";
  logMessage("[Extractor] CACerts path %s exists\n", source);
  logMessage("[Extractor] TargetCACerts path is %s\n", target.c_str());
  // A link is removed even if it leads nowhere: the copy would be written where it points.
  if (doesFileExist(target.c_str()) || isLink(target)) {
    logMessage("[Extractor] Removing old cacerts file\n");
    logMessage("[Extractor] Result = %d\n", std::remove(target.c_str()));
  }
  return copyFile(source, target.c_str());
}

void callVerPatchOn(const char* tool, const char* file, const char* name) {
  const OwnedSpawner spawner =
      spawnerOf({tool, file,  "4.0.0.0",     "/s",     "description",    name, "/s", "ProductName",
                 name, "/pv", "4.0.0.0",     "/s",     "LegalCopyright", " ",  "/s", "Company",
                 " ",  "/s",  "FullVersion", "4.0.0.0"});
  logMessage("[VerPath] Returned %d\n", runSpawnerAndWait(spawner.get()));
}

}  // namespace quillory
