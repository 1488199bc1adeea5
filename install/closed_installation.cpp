#include "install/closed_installation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "install/version_folders.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOthersLook = 0755;
constexpr mode_t kForOwnerAlone = 0700;
constexpr mode_t kOthersEnter = S_IXGRP | S_IXOTH;
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr mode_t kPermissions = 0777;
// Both of version folders and of temporary ones.
constexpr char kPrefix[] = "Quillory";
constexpr char kVersionFolderPrefix[] = "Quillory-";

bool isFolderOfOurs(const std::string& path, mode_t mode) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
         (found.st_mode & kPermissions) == mode;
}

bool refuse(const std::string& masterFolder) {
  logError("[SUDO] The master folder %s is a link, or belongs to another user. Giving up.\n",
           masterFolder.c_str());
  return false;
}

std::vector<std::string> closedFoldersIn(const std::string& masterFolder) {
  std::vector<std::string> closed;
  for (const std::string& name : namesIn(masterFolder))
    if (name.starts_with(kVersionFolderPrefix) &&
        isFolderOfOurs(joinPath(masterFolder, name), kForOwnerAlone))
      closed.push_back(name);
  std::stable_partition(closed.begin(), closed.end(), [](const std::string& name) {
    return componentOfFolder(name) != kUpdaterName;
  });
  return closed;
}

}  // namespace

bool closeInstallation(const std::string& masterFolder) {
  mkdir(masterFolder.c_str(), kOthersLook);
  const int folder = open(masterFolder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder == -1) return !isLink(masterFolder) || refuse(masterFolder);
  struct stat found {};
  const bool isOurs = fstat(folder, &found) == 0 && found.st_uid == geteuid();
  if (isOurs) fchmod(folder, kOthersLook);
  close(folder);
  if (!isOurs) return refuse(masterFolder);
  keepFoldersClosed(masterFolder, kPrefix);
  return true;
}

void openInstallation(const std::string& masterFolder) {
  keepFoldersClosed("", "");
  for (const std::string& name : closedFoldersIn(masterFolder))
    chmod777Folder(joinPath(masterFolder, name).c_str());
  if (!isFolderOfOurs(masterFolder, static_cast<mode_t>(installationMode())))
    chmod777Folder(masterFolder.c_str());
}

bool isOutOfReach(const std::string& masterFolder, const std::string& path) {
  std::error_code error;
  const fs::path master = fs::canonical(masterFolder, error);
  if (error) return false;
  const fs::path file = fs::canonical(path, error);
  if (error) return false;
  const fs::path inside = file.lexically_relative(master);
  if (inside.empty() || *inside.begin() == "..") return false;
  fs::path place = master.parent_path();
  for (const fs::path& name : master.filename() / inside) {
    place /= name;
    struct stat found {};
    if (lstat(place.c_str(), &found) != 0 || found.st_uid != geteuid()) return false;
    if ((found.st_mode & kOthersWrite) != 0) return false;
    if (place != master && S_ISDIR(found.st_mode) && (found.st_mode & kOthersEnter) == 0)
      return true;
  }
  return true;
}

}  // namespace quillory
