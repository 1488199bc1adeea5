#include "install/version_folders.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/clock.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr std::size_t kLongestFileName = 255;

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

}  // namespace

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
