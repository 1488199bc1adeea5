#include "support/files.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "support/clock.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/platform.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

constexpr int kRenameAttempts = 10;
constexpr std::uint64_t kRenamePauseMicros = 300000;

void deleteFile(const std::string& path) {
  logMessage("Deleting FILE %s\n", path.c_str());
  if (std::remove(path.c_str()) != 0) logMessage("Failed to delete file %s\n", path.c_str());
}

void clearTarget(const char* path) {
  if (doesFileExist(path)) {
    logMessage("[Rename] The target already exists. Deleting.\n");
    if (!isLink(path)) deleteFolder(path);
  }
  // A link, dangling or not, would be in the way of a folder, and what it points to is not ours.
  if (isLink(path)) deleteFile(path);
}

// 0, or the errno of rename(): logging comes between the call and its use.
int tryRename(const char* oldPath, const char* newPath) {
  return rename(oldPath, newPath) == 0 ? 0 : errno;
}

void logRenamed(const char* oldPath, const char* newPath) {
  logMessage("[Rename] File '%s' renamed to '%s'\n", oldPath, newPath);
}

// Something else may hold a file for a moment (a virus scanner, an indexer): up to ten attempts,
// each a move by the file manager, a pause, and a rename. 0 when the item was moved, else the last
// errno.
int renameWithRetries(const char* oldPath, const char* newPath, int failure) {
  for (int attempt = 1; attempt <= kRenameAttempts && failure != 0; ++attempt) {
    logMessage("[Rename] Could not rename '%s' to '%s' [%d]\n", oldPath, newPath, failure);
    std::string error;
    if (platformCalls.moveItem(oldPath, newPath, error)) {
      logMessage("[Rename] OSX Rename worked.\n");
      return 0;
    }
    logToSystem("[Rename] Unable to move item: %s", error.c_str());
    timeCalls.sleepMicros(kRenamePauseMicros);
    failure = tryRename(oldPath, newPath);
  }
  return failure;
}

void copyInstead(const char* oldPath, const char* newPath) {
  logMessage("[Rename] Can do no better than a copy on this filesystem\n");
  makeDir(newPath);
  logMessage("[Rename] Created folder %s\n", newPath);
  if (copyFolder(oldPath, newPath) == 0)
    logMessage("[Rename] Copied %s to %s\n", oldPath, newPath);
  else
    logMessage("[Rename] Copy failed too! Severe filesystem issues.\n");
}

mode_t modeOfNewFolder(const char* path) {
  return static_cast<mode_t>(isKeptClosed(path) ? 0700 : installationMode());
}

// As mkdir(2), in two tries.
int makeFolder(const char* path, mode_t mode) {
  const int made = mkdir(path, mode);
  return made == 0 || errno == EEXIST ? made : mkdir(path, mode);
}

}  // namespace

bool removeTree(const std::string& path) {
  return inTwoTries([&] {
    std::error_code error;
    fs::remove_all(path, error);
    struct stat left {};
    return lstat(path.c_str(), &left) != 0 && errno == ENOENT;
  });
}

void removeFileOrLink(const std::string& path) {
  struct stat found {};
  if (lstat(path.c_str(), &found) == 0 && !S_ISDIR(found.st_mode))
    inTwoTries([&] { return unlink(path.c_str()) == 0; });
}

void doRename(const char* oldPath, const char* newPath) {
  printWorkingDir();
  clearTarget(newPath);
  int failure = tryRename(oldPath, newPath);
  if (failure != 0) failure = renameWithRetries(oldPath, newPath, failure);
  if (failure == 0) {
    logRenamed(oldPath, newPath);
    return;
  }
  logMessage("[Rename] [FAIL] Could not rename '%s' to '%s' [%d]\n", oldPath, newPath, failure);
  copyInstead(oldPath, newPath);
}

int makeDir(const char* path) {
  if (isForeignLink(path)) {
    logMessage("[Extractor] The link %s belongs to another user: it is not followed\n", path);
    return -1;
  }
  if (isFolder(path)) return 0;
  const int made = makeFolder(path, modeOfNewFolder(path));
  // Also when it could not be made: a folder that is there but closed to us may be opened by this.
  chmod777Folder(path);
  return made;
}

int makeNewDir(const char* path) {
  if (makeFolder(path, modeOfNewFolder(path)) != 0) return -1;
  chmod777Folder(path);
  return 0;
}

bool makeDirWithParents(const std::string& path, unsigned mode) {
  if (isFolder(path)) return true;
  const std::string parent = fs::path(path).parent_path();
  if (!parent.empty() && parent != path && !makeDirWithParents(parent)) return false;
  // "a/b/" is made as the parent of nothing.
  if (isFolder(path)) return true;
  if (makeFolder(path.c_str(), static_cast<mode_t>(mode)) != 0) return false;
  logMessage("[Extractor] Created %s\n", path.c_str());
  return true;
}

bool doesFileExist(const char* path) {
  const OwnedFile file(std::fopen(path, "rb"));
  if (file == nullptr) return false;
  logMessage("File exists: %s\n", path);
  return true;
}

bool isFolder(const std::string& path) { return OwnedFolder(opendir(path.c_str())) != nullptr; }

bool isRealFolder(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
}

bool isLink(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISLNK(found.st_mode);
}

}  // namespace quillory
