#include "java/jre_inspection.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "install/leftovers.h"
#include "java/whole_copy.h"
#include "support/command_output.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process.h"
#include "support/spawner.h"

namespace quillory {
namespace {

constexpr char kTrustStoreFolder[] = "/lib/security";
constexpr char kTrustStoreFile[] = "/cacerts";

std::string binFolder(const std::string& jreFolder) { return jreFolder + "/Contents/Home/bin"; }

// The answer of `java -version`, if it could be asked.
std::optional<std::string> askForVersion(const std::string& java) {
  if (!isSafeInShellQuotes(java)) return outputOfProgram({java, "-version"});
  // No redirection: a java that answers on standard error only is taken for one without a version.
  return outputOfCommand('"' + java + "\" -version");
}

// "8" of `java version "1.8.0_202"`, and "0" for everything of another form.
std::string secondComponent(const std::string& answer) {
  const char* const quote = std::strchr(answer.c_str(), '"');
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

std::string javaOf(const std::string& jreFolder) {
  std::string java = binFolder(jreFolder) + "/java";
  if (!openAsInstalled(java)) logError("Error setting java to executable!\n");
  return java;
}

std::string unpack200Of(const std::string& jreFolder) {
  const std::string bin = binFolder(jreFolder);
  std::string unpack200 = bin + "/unpack200";
  std::printf("[Locating UP200] %s\n", jreFolder.c_str());
  std::printf("[Locating UP200] %s\n", bin.c_str());
  std::printf("[Locating UP200] Result is %s\n", unpack200.c_str());
  if (!openAsInstalled(unpack200)) logError("Error setting unpack200 to executable!\n");
  return unpack200;
}

std::string javaVersionOf(const std::string& java) {
  const std::optional<std::string> answer = askForVersion(java);
  if (!answer) {
    logMessage(
        "[JavaCheck] Version command result for JRE is empty, problem running version check?\n");
    return "0";
  }
  logMessage("[JavaCheck] Version command result for JRE is %s\n", answer->c_str());
  return secondComponent(*answer);
}

bool meetsVersionRequirement(const std::string& java, const std::string& requiredVersion) {
  const std::string version = javaVersionOf(java);
  logMessage("[Extractor] Checking JRE version requirements: %s vs required %s\n", version.c_str(),
             requiredVersion.c_str());
  return std::strtol(version.c_str(), nullptr, 10) >=
         std::strtol(requiredVersion.c_str(), nullptr, 10);
}

bool isHealthyJre(const std::string& jreFolder) {
  return doesFileExist((jreFolder + "/bin/java").c_str()) &&
         doesFileExist((jreFolder + "/lib/rt.jar").c_str());
}

bool holdsJava(const std::string& folder) {
  for (const char* const java :
       {"/Contents/Home/bin/java", "/Contents/Home/jre/bin/java", "/bin/java"})
    if (access((folder + java).c_str(), F_OK) == 0) return true;
  return false;
}

void regenerateSharedArchive(const std::string& jreFolder) {
  const std::string java = javaOf(jreFolder);
  runSpawnerAndWait(spawnerOf({java.c_str(), "-Xshare:dump"}).get());
}

int replaceTrustStore(const std::string& source, const std::string& jreHome) {
  return replaceTrustStore(source, jreHome, jreHome);
}

int replaceTrustStore(const std::string& source, const std::string& jreHome,
                      const std::string& content) {
  // One that is there and cannot be opened now may be read by the copy.
  if (!doesFileExist(source.c_str()) && access(source.c_str(), F_OK) != 0) {
    logMessage("[Extractor] Override CACerts does not exist.\n");
    return 0;
  }
  const std::string folder = content + kTrustStoreFolder;
  const std::string target = folder + kTrustStoreFile;
  const std::string shown = jreHome + kTrustStoreFolder + kTrustStoreFile;
  logMessage("[Extractor] CACerts path %s exists\n", source.c_str());
  logMessage("[Extractor] TargetCACerts path is %s\n", shown.c_str());
  clearUnfinishedFiles(folder);
  struct stat old = {};
  if (lstat(target.c_str(), &old) == 0) {
    if (access(target.c_str(), R_OK) == 0) logMessage("File exists: %s\n", shown.c_str());
    logMessage("[Extractor] Removing old cacerts file\n");
    // It is not removed before the copy takes its place. What the line tells is whether it can be.
    logMessage("[Extractor] Result = %d\n", access(folder.c_str(), W_OK));
  }
  return copyWhole(source, {target, shown}) ? 0 : 1;
}

}  // namespace quillory
