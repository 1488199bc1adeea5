#include "support/file_modes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "support/log.h"
#include "support/new_file.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

// How system() tells that the command ended with status 1.
constexpr int kCommandFailed = 1 << 8;
constexpr int kMostLinks = 40;
constexpr mode_t kAllBits = 07777;

constexpr mode_t kForOwnerAlone = 0700;
constexpr mode_t kWrittenByOthers = 022;

InstallationModes chosen = InstallationModes::kOpenToAll;
std::string closedParent;
std::string closedPrefix;

bool isOurs(const struct stat& found) { return found.st_uid == geteuid(); }

bool isForeign(const struct stat& link) {
  return S_ISLNK(link.st_mode) && !isOurs(link) && link.st_uid != 0;
}

// The command leaves a folder's set-group-ID bit, which makes new files in it the group's.
mode_t wantedMode(const struct stat& found, mode_t mode) {
  if (!S_ISDIR(found.st_mode)) return mode;
  return static_cast<mode_t>(mode | (found.st_mode & (S_ISUID | S_ISGID)));
}

// Between the look at it and this, somebody may have put a link there: it is not followed.
bool setModeOfItself(const char* path, mode_t mode) {
  // Where the C library opens the path for it, that can be interrupted.
  const auto set = [&] { return fchmodat(AT_FDCWD, path, mode, AT_SYMLINK_NOFOLLOW); };
  if (inTwoTries([&] { return untilUninterrupted(set) == 0; })) return true;
  // Not known to every system; the C library's own way needs /proc.
  struct stat found {};
  return (errno == ENOTSUP || errno == EOPNOTSUPP) && lstat(path, &found) == 0 &&
         !S_ISLNK(found.st_mode) && chmod(path, mode) == 0;
}

int changeOne(const char* path, const struct stat& found, mode_t mode) {
  const mode_t wanted = wantedMode(found, mode);
  if ((found.st_mode & kAllBits) == wanted) return 0;
  const bool mayBePrivate = !S_ISDIR(found.st_mode) && found.st_nlink > 1;
  return isOurs(found) && !mayBePrivate && setModeOfItself(path, wanted) ? 0 : kCommandFailed;
}

// The path that a chain of links leads to; "" where it is broken, endless or somebody else's.
std::string behindLinks(const char* path, struct stat& found) {
  fs::path place = path;
  for (int links = 0; links < kMostLinks; ++links) {
    if (lstat(place.c_str(), &found) != 0 || isForeign(found)) return "";
    if (!S_ISLNK(found.st_mode)) return place;
    std::error_code error;
    const fs::path target = fs::read_symlink(place, error);
    if (error) return "";
    place = place.parent_path() / target;
  }
  return "";
}

int changeMode(const char* path, mode_t mode) {
  struct stat found {};
  const std::string place = behindLinks(path, found);
  return place.empty() ? kCommandFailed : changeOne(place.c_str(), found, mode);
}

int changeEntry(const fs::directory_entry& entry, mode_t mode) {
  struct stat found {};
  if (lstat(entry.path().c_str(), &found) != 0) return kCommandFailed;
  return S_ISLNK(found.st_mode) ? 0 : changeOne(entry.path().c_str(), found, mode);
}

void logCommand(const char* command, const char* path) {
  logMessage("[ChMod] Executing %s \"%s\"\n", command, path);
}

const char* openingCommand() {
  return chosen == InstallationModes::kOpenToAll ? "chmod 777" : "chmod 755";
}

mode_t openingMode() { return static_cast<mode_t>(installationMode()); }

}  // namespace

void chooseInstallationModes(InstallationModes modes) { chosen = modes; }

bool usesOnlyTrusted() { return chosen == InstallationModes::kOnlyTrustedAreUsed; }

unsigned installationMode() { return chosen == InstallationModes::kOpenToAll ? 0777 : 0755; }

unsigned installationFileMode() { return chosen == InstallationModes::kOpenToAll ? 0666 : 0644; }

int chmodR755(const char* path) {
  logCommand("chmod -R 755", path);
  return setModesBelow(path, 0755);
}

int chmodR755(NewFile& file) {
  logCommand("chmod -R 755", file.path().c_str());
  return file.setMode(0755) ? 0 : kCommandFailed;
}

int chmod777(const char* path) {
  if (isKeptClosed(path)) return changeMode(path, kForOwnerAlone);
  logCommand(openingCommand(), path);
  return changeMode(path, openingMode());
}

int chmod777Folder(const char* path) {
  const bool isClosed = isKeptClosed(path);
  if (!isClosed) logCommand(openingCommand(), path);
  struct stat found {};
  const bool isFolder = lstat(path, &found) == 0 && S_ISDIR(found.st_mode);
  return isFolder ? changeOne(path, found, isClosed ? kForOwnerAlone : openingMode())
                  : kCommandFailed;
}

bool openAsInstalled(const std::string& path) {
  return changeMode(path.c_str(), openingMode()) == 0;
}

// Goes on behind a failure, as the command does. A folder gets its mode before it is entered, which
// may be what makes it readable.
int setModesBelow(const std::string& path, unsigned mode) {
  const mode_t wanted = static_cast<mode_t>(mode);
  struct stat found {};
  const std::string place = behindLinks(path.c_str(), found);
  if (place.empty()) return kCommandFailed;
  int status = changeOne(place.c_str(), found, wanted);
  if (!S_ISDIR(found.st_mode)) return status;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(place, error), end; !error && entry != end;
       entry.increment(error))
    if (changeEntry(*entry, wanted) != 0) status = kCommandFailed;
  return error ? kCommandFailed : status;
}

bool isForeignLink(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && isForeign(found);
}

bool mayBeUsed(const std::string& path) {
  if (!usesOnlyTrusted()) return true;
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
         (isOurs(found) || found.st_uid == 0) && (found.st_mode & kWrittenByOthers) == 0;
}

void keepFoldersClosed(const std::string& parent, const std::string& prefix) {
  closedParent = parent;
  closedPrefix = prefix;
}

bool isKeptClosed(const std::string& path) {
  if (closedParent.empty()) return false;
  const fs::path folder(path);
  return folder.parent_path() == fs::path(closedParent) &&
         folder.filename().string().starts_with(closedPrefix);
}

}  // namespace quillory
