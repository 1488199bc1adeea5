#include "launcher/install_locations.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/clock.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr std::size_t kLongestFileName = 255;

std::string homeFromPasswordDatabase() {
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

/// Every name in the folder; none when it cannot be opened.
std::vector<std::string> namesIn(const char* folder) {
  return listFolder(folder).value_or(std::vector<std::string>());
}

/// The text between the `n`-th '-' (counting from 1) and the next one; false without that one.
bool fieldBehindDash(const char* folderName, int n, std::string& field) {
  const int begin = indexOf(folderName, '-', n);
  const int end = indexOf(folderName, '-', n + 1);
  if (begin < 0 || end < 0) return false;
  field.assign(folderName + begin + 1, folderName + end);
  return true;
}

bool isInsideOneFolder(std::string_view text) {
  constexpr std::string_view kNever("/\0", 2);
  return text != ".." && text.find_first_of(kNever) == text.npos;
}

char* allocPath(const std::string& first, const char* second, const char* third) {
  OwnedText path(static_cast<char*>(std::calloc(kPathCapacity, 1)));
  if (path == nullptr) return nullptr;
  setPath(path.get(), first.c_str(), second, third);
  return path.release();
}

}  // namespace

UserCalls userCalls = {homeFromPasswordDatabase};

char* locateSharedDirectory(const char* installType) {
  if (std::strcmp(installType, "perm_all") == 0) {
    logMessage("Permanent install for all users\n");
    return allocPath("/", "Library", "Application Support");
  }
  const bool isPermanent = std::strcmp(installType, "perm_user") == 0;
  logMessage(isPermanent ? "Permanent install for current user\n" : "Temporary install\n");

  const std::string home = userCalls.homeFolder();
  logMessage("HomeDir is %s\n", home.c_str());
  if (home.empty()) return nullptr;
  char* directory = allocPath(home, "Library", "Application Support");
  // With its parents: outside macOS a home folder has no "Library".
  if (directory != nullptr) makeDirWithParents(directory);
  return directory;
}

std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName) {
  char path[kPathCapacity];
  return setPath(path, sharedDirectory.c_str(), ("Quillory-" + appName).c_str());
}

bool isUsableInFolderName(std::string_view name, std::string_view version) {
  constexpr std::string_view kAround = "Quillory---complete.plugin";
  return isInsideOneFolder(name) && isInsideOneFolder(version) &&
         kAround.size() + name.size() + version.size() <= kLongestFileName;
}

char* makeAppFolder(char* dst, const char* master, const char* name, const char* version) {
  const std::string folder = std::string("Quillory-") + name + "-" + version + "-complete";
  return setPath(dst, master, folder.c_str());
}

char* makeAppTempFolder(char* dst, const char* master) {
  const std::uint64_t seconds = getCurrentTimeMillis() / 1000;
  const std::string folder = "QuilloryTemp-" + std::to_string(seconds) + "-" +
                             std::to_string(countFolderEntries(master)) + "-app";
  return setPath(dst, master, folder.c_str());
}

int checkAppFolderName(const char* folderName, const char* name) {
  std::string field;
  return fieldBehindDash(folderName, 1, field) ? std::strcmp(field.c_str(), name) : -1;
}

long pickVersionFromAppFolderName(const char* folderName) {
  std::string field;
  return fieldBehindDash(folderName, 2, field) ? std::strtol(field.c_str(), nullptr, 10) : -1;
}

char* pickAndAllocLatestFromMaster(const char* master, const char* name) {
  std::vector<std::string> entries = namesIn(master);
  std::sort(entries.begin(), entries.end());

  const std::string* latest = nullptr;
  long latestVersion = -1;
  for (const std::string& entry : entries) {
    if (entry.size() < 3 || checkAppFolderName(entry.c_str(), name) != 0) continue;
    const long version = pickVersionFromAppFolderName(entry.c_str());
    logMessage("[PickFolder] Folder %s matches %s with version %ld\n", entry.c_str(), name,
               version);
    if (version <= latestVersion) continue;
    latest = &entry;
    latestVersion = version;
    logMessage("[PickFolder] Set latest to %ld %s\n", latestVersion, latest->c_str());
  }
  return latest != nullptr ? allocCopy(latest->c_str()) : nullptr;
}

long countFolderEntries(const char* folder) { return static_cast<long>(namesIn(folder).size()); }

}  // namespace quillory
