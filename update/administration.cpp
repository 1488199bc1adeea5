#include "update/administration.h"

#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/tail_format.h"
#include "formats/update_settings.h"
#include "install/install_locations.h"
#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "support/log.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/strings.h"
#include "update/settings_in_force.h"
#include "update/update_folder.h"
#include "update/versions.h"

namespace quillory::update {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kAdministrator = 0;
constexpr mode_t kWrittenByOthers = S_IWGRP | S_IWOTH;
constexpr int kNotRun = -1;
constexpr int kSignalBase = 128;
constexpr char kUpdateProgramName[] = "quillory-update";
constexpr char kSearchPath[] = "PATH=/usr/bin:/bin:/usr/sbin:/sbin";
// In both spellings that programs look for.
constexpr std::array<std::string_view, 9> kKeptVariables = {
    "http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTPS_PROXY",
    "ALL_PROXY",  "NO_PROXY",    "LANG",      "LC_ALL"};

bool isAdministratorsAlone(const struct stat& found) {
  return found.st_uid == kAdministrator && (found.st_mode & kWrittenByOthers) == 0;
}

bool isThere(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0;
}

std::string openToOthers(const std::string& place) {
  return place + " could have been changed by another user: it has no part in what an " +
         "administrator runs";
}

// What an administrator's run reads, beside the program, and only looks for.
std::vector<std::string> filesBeside(const std::string& updaterFolder) {
  return {joinPath(updaterFolder, kUpdateSettingsFileName), joinPath(updaterFolder, kLzmaToolName),
          joinPath(updaterFolder, kSplashPictureName), joinPath(updaterFolder, kTrustStoreName)};
}

// Every place that has to be the administrator's; "" when all are.
std::string openPlaceOf(const Installation& its, const std::string& program,
                        const std::string& from) {
  std::string place = openPlaceOn(program, from);
  for (const std::string& file : filesBeside(its.updaterFolder))
    if (place.empty() && isThere(file)) place = openPlaceOn(file, from);
  const std::string administrators = joinPath(kAdministratorsFolder, its.appName + ".conf");
  if (place.empty() && isThere(administrators)) place = openPlaceOn(administrators);
  return place.empty() ? openPlaceBelow(its.updatesFolder()) : place;
}

// The settings of the newest updater: an older one may still trust a key that was stolen since.
std::string whyNotSettled(Installation& its) {
  const std::vector<InstalledVersion> updaters = updaterVersions(its);
  const std::string folder = fs::path(its.updaterFolder).filename().string();
  if (updaters.empty() || updaters.front().folder != folder)
    return its.updaterFolder + " is not that of the newest updater";
  const UpdateSettingsResult read =
      readUpdateSettings(joinPath(its.updaterFolder, kUpdateSettingsFileName));
  if (!read.settings) return "there are no settings for updates in " + its.updaterFolder;
  if (read.settings->keys.empty() || read.settings->updateUrl.empty())
    return "the settings for updates in " + its.updaterFolder +
           " name no key, or no update URL: they are of an installation for one user";
  its.updateUrl = read.settings->updateUrl;
  if (!its.updateUrl.ends_with('/')) its.updateUrl += '/';
  its.jreName = read.settings->runtimeName;
  return isUsableAsJre(its.jreName, "") ? "" : its.jreName + " cannot be a folder's name";
}

int statusOf(int waitStatus) {
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalBase + WTERMSIG(waitStatus);
}

}  // namespace

std::string openPlaceOn(const std::string& path, const std::string& from) {
  fs::path place = from;
  for (const fs::path& name : fs::path(path).lexically_relative(from)) {
    place /= name;
    struct stat found {};
    if (lstat(place.c_str(), &found) != 0 || S_ISLNK(found.st_mode) ||
        !isAdministratorsAlone(found))
      return place.string();
  }
  return "";
}

std::string openPlaceBelow(const std::string& folder) {
  if (!isThere(folder)) return "";
  std::error_code error;
  struct stat found {};
  if (lstat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode) ||
      !isAdministratorsAlone(found))
    return folder;
  fs::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    const bool isSeen = lstat(entry->path().c_str(), &found) == 0;
    // The mode of a link says nothing, and whose it is all.
    const bool isLink = isSeen && S_ISLNK(found.st_mode) && found.st_uid == kAdministrator;
    if (!isLink && !(isSeen && isAdministratorsAlone(found))) return entry->path().string();
  }
  return error ? folder : "";
}

AdministratorsProgram administratorsProgram(const Installation& installation,
                                            const std::string& from) {
  const std::vector<InstalledVersion> updaters = updaterVersions(installation);
  if (updaters.empty()) return {"", "no updater is installed"};
  std::error_code error;
  const std::string path =
      fs::canonical(
          joinPath(installation.masterFolder, updaters.front().folder, kUpdateProgramName), error)
          .string();
  if (error) return {"", "the newest updater has no " + std::string(kUpdateProgramName)};
  const std::string place = openPlaceOn(path, from);
  return place.empty() ? AdministratorsProgram{path, ""}
                       : AdministratorsProgram{"", openToOthers(place)};
}

std::optional<Installation> administeredInstallation(const std::string& program, std::string& why,
                                                     const std::string& from) {
  Installation its;
  const fs::path updaterFolder = fs::path(program).parent_path();
  const std::string prefix = fs::path(masterFolderFor("", "")).filename().string();
  const std::string name = updaterFolder.parent_path().filename().string();
  if (!name.starts_with(prefix) || !isUsableInFolderName(name.substr(prefix.size()), "") ||
      name == prefix) {
    why = program + " does not lie in an installation";
    return std::nullopt;
  }
  its.appName = name.substr(prefix.size());
  its.updaterFolder = updaterFolder.string();
  its.masterFolder = updaterFolder.parent_path().string();
  its.ownFolder = its.masterFolder;
  its.isHardened = true;
  its.isForAllUsers = true;
  const std::string place = openPlaceOf(its, program, from);
  why = place.empty() ? whyNotSettled(its) : openToOthers(place);
  if (!why.empty()) return std::nullopt;
  return its;
}

int runElevated(const Installation& installation, const AdministratorsProgram& program,
                const std::string& draw, int lines) {
  const fs::path contents = fs::path(installation.launcher).parent_path().parent_path();
  const std::string tool = (contents / "Resources/elev_mac").string();
  const std::vector<std::string> arguments = {
      tool,
      "--prompt=An update of " + installation.appName + " is to be installed for all users.",
      program.path,
      "install-for-all",
      "--draw",
      draw};
  logMessage("[Update] With the administrator's rights, by %s: %s\n", tool.c_str(),
             program.path.c_str());
  posix_spawn_file_actions_t redirections;
  posix_spawn_file_actions_init(&redirections);
  posix_spawn_file_actions_adddup2(&redirections, lines, STDOUT_FILENO);
  pid_t child = 0;
  const int error = processCalls.spawn(&child, tool.c_str(), &redirections,
                                       argumentPointers(arguments).data(), getEnvP());
  posix_spawn_file_actions_destroy(&redirections);
  if (error != 0) {
    logMessage("[Update] %s cannot be started: %s\n", tool.c_str(), std::strerror(error));
    return kNotRun;
  }
  int status = 0;
  return processCalls.waitFor(child, &status) < 0 ? kNotRun : statusOf(status);
}

void standAlone() {
  umask(S_IWGRP | S_IWOTH);
  (void)!chdir("/");
  std::vector<std::string> kept = {kSearchPath};
  for (char** variable = getEnvP(); *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    for (const std::string_view name : kKeptVariables)
      if (text.substr(0, text.find('=')) == name) kept.emplace_back(text);
  }
  while (*getEnvP() != nullptr) {
    const std::string_view text = *getEnvP();
    if (unsetenv(std::string(text.substr(0, text.find('='))).c_str()) != 0) break;
  }
  for (const std::string& variable : kept) {
    const std::size_t equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
  }
}

}  // namespace quillory::update
