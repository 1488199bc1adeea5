#include "install/install_locations.h"

#include <pwd.h>
#include <unistd.h>

#include "support/files.h"
#include "support/log.h"
#include "support/paths.h"

namespace quillory {

std::string homeFolderOfUser() {
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

std::optional<std::string> sharedDirectoryFor(const std::string& installType,
                                              const std::function<std::string()>& homeFolder) {
  if (installType == "perm_all") {
    logMessage("Permanent install for all users\n");
    return "/Library/Application Support";
  }
  logMessage(installType == "perm_user" ? "Permanent install for current user\n"
                                        : "Temporary install\n");
  const std::string home = homeFolder();
  logMessage("HomeDir is %s\n", home.c_str());
  if (home.empty()) return std::nullopt;
  std::string directory = joinPath(home, "Library", "Application Support");
  // Outside macOS a home folder has no "Library". Both are as macOS makes them: what is in there is
  // this user's, and nobody else has to write beside it.
  makeDirWithParents(joinPath(home, "Library"), 0700);
  makeDirWithParents(directory);
  return directory;
}

std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName) {
  return joinPath(sharedDirectory, "Quillory-" + appName);
}

}  // namespace quillory
