#include "java/jre_search.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "formats/launch_file.h"
#include "install/version_folders.h"
#include "java/jre_inspection.h"
#include "support/command_output.h"
#include "support/durable.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process.h"
#include "support/program.h"

namespace quillory {

namespace {

// More links in a row than any system follows: relative targets are taken as they are read, and
// could lead in circles here where the system's own search did not.
constexpr int kMaxLinks = 64;

struct SystemJre {
  std::string folder;
  std::string java;
  std::string unpack200;
};

// Folders into which systems and package managers link the programs of everybody: the `java` there
// is some JRE's, and the folder above it is none. It would be copied whole.
bool isPrefixOfSystem(std::string_view folder) {
  constexpr std::array<std::string_view, 6> kPrefixes = {
      "", "/", "/usr", "/usr/local", "/opt/homebrew", "/opt/local"};
  return std::find(kPrefixes.begin(), kPrefixes.end(), folder) != kPrefixes.end();
}

SystemJre jreWithToolsIn(const std::string& folder, const char* toolFolder) {
  const std::string tools = folder + toolFolder;
  SystemJre jre = {folder, tools + "/java", tools + "/unpack200"};
  logMessage("[JRESearch] Looking at JRE %s\n", jre.java.c_str());
  return jre;
}

bool isAcceptable(const SystemJre& jre, const std::string& requiredVersion) {
  return doesFileExist(jre.java.c_str()) && doesFileExist(jre.unpack200.c_str()) &&
         meetsVersionRequirement(jre.java, requiredVersion);
}

// The `java` to begin with, "" when the path has none; nothing when that could not be found out.
std::optional<std::string> findJava(const SystemJreQuestion& question) {
  if (question.isAutoTest) {
    const std::string& java = question.places.autoTestJava;
    logMessage("AutoTesting - will fake possible jave exe to '%s'\n", java.c_str());
    return java;
  }
  return outputOfCommand("sh -c \"which java\"");
}

std::string followLinks(std::string path) {
  for (int i = 0; i < kMaxLinks; ++i) {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(path, error).string();
    if (error) return path;
    logMessage("[JRESearch] Followed link %s -> %s\n", path.c_str(), target.c_str());
    path = target;
  }
  return path;
}

std::optional<SystemJre> findAcceptableJre(const SystemJreQuestion& question) {
  const std::optional<std::string> java = findJava(question);
  if (!java) return std::nullopt;
  logMessage("[JRESearch] 'which java' returned '%s'\n", java->c_str());

  SystemJre jre;
  const std::string folder = jreFolderOfJava(*java);
  // Of such a folder no path is built: "/bin/java" would be a JRE that nobody named.
  const bool isNone = isPrefixOfSystem(folder);
  if (!isNone) jre = jreWithToolsIn(folder, "/bin");
  if (isNone || !isAcceptable(jre, question.requiredJavaVersion)) {
    logMessage("[JRESearch] A JRE does not seem to exist here.\n");
    jre = jreWithToolsIn(question.places.appletPlugin, "/Contents/Home/bin");
  }
  // Whichever it is now is examined, the version check included, also when it just was.
  if (!isAcceptable(jre, question.requiredJavaVersion)) {
    logMessage("[JRESearch] JRE does not exist or does not have unpack200\n");
    return std::nullopt;
  }
  logMessage("[JRESearch] JRE unpack200 exists %s\n", jre.unpack200.c_str());
  return jre;
}

// Runs a command of /bin with the words and the quoted paths. Returns the wait status of it, or of
// the shell that ran it.
int runOnPaths(const std::string& command, std::initializer_list<std::string> words,
               std::initializer_list<std::string> paths) {
  std::string line = command;
  for (const std::string& word : words) line += ' ' + word;
  for (const std::string& path : paths) line += " \"" + path + '"';
  logMessage("[JRESearch] Running %s\n", line.c_str());
  if (std::all_of(paths.begin(), paths.end(), isSafeInShellQuotes)) {
    return processCalls.runShell(line.c_str());
  }
  std::vector<std::string> arguments = {"/bin/" + command};
  arguments.insert(arguments.end(), words);
  arguments.insert(arguments.end(), paths);
  return runProgram(arguments).waitStatus;
}

// A shell passes a signal on as 128 and its number.
bool wasEndedBySignal(int waitStatus) {
  return WIFSIGNALED(waitStatus) || (WIFEXITED(waitStatus) && WEXITSTATUS(waitStatus) > 128);
}

bool wasSuccessful(int waitStatus) { return WIFEXITED(waitStatus) && WEXITSTATUS(waitStatus) == 0; }

// What cp cannot copy, the second time too, it says itself, and the rest may do. One that was
// killed has not said anything, and what it left would be taken for a JRE for ever: false.
bool copyByCommand(const std::string& folder, const std::string& copy) {
  int status = runOnPaths("cp", {"-LRf"}, {folder, copy});
  if (!wasSuccessful(status) && !wasEndedBySignal(status)) {
    removeTree(copy);
    status = runOnPaths("cp", {"-LRf"}, {folder, copy});
  }
  if (!wasEndedBySignal(status)) return true;
  logMessage("[JRESearch] The copying was ended by a signal, the copy is not used\n");
  removeTree(copy);
  return false;
}

}  // namespace

std::string jreFolderOfJava(const std::string& java) {
  std::string folder = followLinks(java);
  logMessage("[JRESearch] Searching for 'bin' occurrence\n");
  // The last one anywhere, inside a word too: links lead to "java" in all kinds of places.
  const std::size_t bin = folder.rfind("bin");
  logMessage("[JRESearch] Done searching for 'bin'\n");
  if (bin != std::string::npos) {
    folder.resize(bin);
    logMessage("[JRESearch] Trimmed possibleJavaExe is %s\n", folder.c_str());
    if (folder.ends_with('/')) {
      folder.pop_back();
      logMessage("[JRESearch] Removed final slash: possibleJavaExe is %s\n", folder.c_str());
    }
  }
  logMessage("[JRESearch] Final possibleJavaExe is %s\n", folder.c_str());
  return folder;
}

SystemJreSearch copySystemJre(const std::string& masterFolder, const SystemJreQuestion& question) {
  const std::optional<SystemJre> jre = findAcceptableJre(question);
  if (!jre) return {};
  const std::optional<std::string> updater =
      question.onlyWhole ? newestVersionFolder(masterFolder, kUpdaterName, holdsLaunchFile)
                         : newestVersionFolder(masterFolder, kUpdaterName);
  if (!updater) {
    logMessage(
        "[JRESearch] ****************************** No latest App version even after download!\n");
    return {.copy = std::nullopt, .isCutShort = true};
  }
  if (!question.isCompatible(*updater, jre->java)) {
    logMessage("[JRESearch] JRE failed compatibility test\n");
    return {};
  }
  logMessage("[JRESearch] JRE is valid, copying...\n");
  // Named, not created: cp would copy into a folder that is there.
  const std::string copy = temporaryFolder(masterFolder);
  if (!copyByCommand(jre->folder, copy)) return {};
  logMessage("[JRESearch] Running chmod -R 755 \"%s/bin\"\n", copy.c_str());
  setModesBelow(copy + "/bin", 0755);
  // It is moved to its place as it is, where files that a power cut emptied would count.
  syncTree(copy);
  return {.copy = copy};
}

}  // namespace quillory
