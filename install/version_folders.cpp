#include "install/version_folders.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "support/clock.h"
#include "support/file_modes.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr std::size_t kLongestFileName = 255;
constexpr int kMostFoldersTried = 100;

/// The text between the `n`-th '-' (counting from 1) and the next one; nothing without that one.
std::optional<std::string> fieldBehindDash(std::string_view folderName, int n) {
  for (int i = 0; i < n; ++i) {
    const std::size_t dash = folderName.find('-');
    if (dash == folderName.npos) return std::nullopt;
    folderName.remove_prefix(dash + 1);
  }
  const std::size_t end = folderName.find('-');
  if (end == folderName.npos) return std::nullopt;
  return std::string(folderName.substr(0, end));
}

bool isInsideOneFolder(std::string_view text) {
  constexpr std::string_view kNever("/\0", 2);
  return text != ".." && text.find_first_of(kNever) == text.npos;
}

bool fitsInto(std::string_view around, std::string_view name, std::string_view version) {
  return isInsideOneFolder(name) && isInsideOneFolder(version) &&
         around.size() + name.size() + version.size() <= kLongestFileName;
}

bool isTaken(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0;
}

}  // namespace

bool isUsableInFolderName(std::string_view name, std::string_view version) {
  return fitsInto("Quillory---complete", name, version);
}

bool isUsableAsJre(std::string_view name, std::string_view version) {
  return fitsInto("Quillory---complete.plugin", name, version);
}

std::string versionFolder(const std::string& master, const std::string& name,
                          const std::string& version) {
  return joinPath(master, "Quillory-" + name + "-" + version + "-complete");
}

std::string temporaryFolder(const std::string& master) {
  const std::string start =
      joinPath(master, "QuilloryTemp-" + std::to_string(getCurrentTimeMillis() / 1000) + "-");
  long count = countFolderEntries(master);
  std::string path = start + std::to_string(count) + "-app";
  for (int tries = 1; tries < kMostFoldersTried && isTaken(path); ++tries)
    path = start + std::to_string(++count) + "-app";
  return path;
}

std::optional<std::string> componentOfFolder(std::string_view folderName) {
  return fieldBehindDash(folderName, 1);
}

std::optional<long> versionOfFolder(std::string_view folderName) {
  const std::optional<std::string> digits = fieldBehindDash(folderName, 2);
  if (!digits) return std::nullopt;
  return std::strtol(digits->c_str(), nullptr, 10);
}

namespace {

/// `passedOverAs` is what the log says of a folder whose path `isWanted` does not accept.
std::optional<std::string> newestFolder(
    const std::string& master, const std::string& name,
    const std::function<bool(const std::string& folder)>& isWanted, const char* passedOverAs) {
  const std::vector<std::string> entries = namesIn(master);
  std::optional<std::string> latest;
  long latestVersion = -1;
  for (const std::string& entry : entries) {
    if (entry.size() < 3 || componentOfFolder(entry) != name) continue;
    const long version = versionOfFolder(entry).value_or(-1);
    logMessage("[PickFolder] Folder %s matches %s with version %ld\n", entry.c_str(), name.c_str(),
               version);
    if (!mayBeUsed(joinPath(master, entry))) {
      logMessage("[PickFolder] Folder %s could have been changed by another user. Skipping.\n",
                 entry.c_str());
      continue;
    }
    if (version <= latestVersion) continue;
    if (!isWanted(joinPath(master, entry))) {
      logMessage("[PickFolder] Folder %s is %s. Skipping.\n", entry.c_str(), passedOverAs);
      continue;
    }
    latest = entry;
    latestVersion = version;
    logMessage("[PickFolder] Set latest to %ld %s\n", latestVersion, latest->c_str());
  }
  return latest;
}

}  // namespace

std::optional<std::string> newestVersionFolder(const std::string& master, const std::string& name) {
  return newestVersionFolder(master, name, [](const std::string&) { return true; });
}

std::optional<std::string> newestVersionFolder(
    const std::string& master, const std::string& name,
    const std::function<bool(const std::string& folder)>& isWhole) {
  return newestFolder(master, name, isWhole, "not whole");
}

std::optional<std::string> newestVersionFolder(const std::string& master, const std::string& name,
                                               const std::vector<std::string>& passedOver) {
  const auto isWanted = [&](const std::string& folder) {
    const std::string entry = folder.substr(folder.rfind('/') + 1);
    return std::find(passedOver.begin(), passedOver.end(), entry) == passedOver.end();
  };
  return newestFolder(master, name, isWanted, "passed over by the updater");
}

long countFolderEntries(const std::string& folder) { return countEntries(folder); }

}  // namespace quillory
