#include "install/install_locations.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

std::string homeFromPasswordDatabase() {
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
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

}  // namespace quillory
