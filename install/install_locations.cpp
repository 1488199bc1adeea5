#include "install/install_locations.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include "support/files.h"
#include "support/log.h"
#include "support/paths.h"

namespace quillory {

std::string homeFolderOfUser() {
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

namespace {

// Outside macOS a home folder has no "Library". Both folders are as macOS makes them: what is in
// there is this user's, and nobody else has to write beside it.
std::string directoryOfUser(const std::string& home) {
  std::string directory = joinPath(home, "Library", "Application Support");
  makeDirWithParents(joinPath(home, "Library"), 0700);
  makeDirWithParents(directory);
  return directory;
}

}  // namespace

bool isForAllUsers(const std::string& installType) { return installType == "perm_all"; }

std::string makePrivateFolder(const std::string& parent) {
  std::string path = joinPath(parent, "Quillory-XXXXXX");
  return mkdtemp(path.data()) != nullptr ? path : "";
}

std::string ownFolderFor(const std::string& home, const std::string& appName,
                         const std::string& temporaryFolder) {
  if (!home.empty()) {
    const std::string folder = masterFolderFor(directoryOfUser(home), appName);
    makeDir(folder.c_str());
    if (!isForeignLink(folder) && access(folder.c_str(), W_OK | X_OK) == 0) return folder;
  }
  return makePrivateFolder(temporaryFolder);
}

std::optional<std::string> sharedDirectoryFor(const std::string& installType,
                                              const std::function<std::string()>& homeFolder) {
  if (isForAllUsers(installType)) {
    logMessage("Permanent install for all users\n");
    return "/Library/Application Support";
  }
  logMessage(installType == "perm_user" ? "Permanent install for current user\n"
                                        : "Temporary install\n");
  const std::string home = homeFolder();
  logMessage("HomeDir is %s\n", home.c_str());
  if (home.empty()) return std::nullopt;
  return directoryOfUser(home);
}

std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName) {
  return joinPath(sharedDirectory, "Quillory-" + appName);
}

}  // namespace quillory
