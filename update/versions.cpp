#include "update/versions.h"

#include <algorithm>
#include <cstdlib>

#include "formats/launch_file.h"
#include "formats/sha256.h"
#include "formats/strict_records.h"
#include "install/unfinished.h"
#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "support/file_modes.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr std::size_t kHashFileBytes = kSha256HexLength + 2;
constexpr std::size_t kMaxTrialsBytes = 1024 * 1024;
constexpr std::int64_t kMaxTrials = 10000;
constexpr std::size_t kMaxTrialText = 1000;

using IsWhole = std::function<bool(const std::string& path)>;

std::string archiveHashIn(const std::string& folder) {
  std::string text = readPlainFile(joinPath(folder, kArchiveHashFile), kHashFileBytes).value_or("");
  if (text.ends_with('\n')) text.pop_back();
  return isSha256Hex(text) ? text : "";
}

// "Quillory-<name>-<version>-complete": the version; "" for every other name.
std::string versionIn(const std::string& folder, const std::string& name) {
  const std::string before = "Quillory-" + name + '-';
  constexpr std::string_view kBehind = "-complete";
  if (!folder.starts_with(before) || !folder.ends_with(kBehind)) return "";
  if (folder.size() <= before.size() + kBehind.size()) return "";
  return folder.substr(before.size(), folder.size() - before.size() - kBehind.size());
}

std::vector<InstalledVersion> versionsOf(const Installation& installation, const std::string& name,
                                         const std::string& hashFolderSuffix,
                                         const IsWhole& isWhole) {
  std::vector<InstalledVersion> versions;
  for (const std::string& folder : namesIn(installation.masterFolder)) {
    const std::string version = versionIn(folder, name);
    const std::string path = joinPath(installation.masterFolder, folder);
    if (version.empty() || isLink(path) || !mayBeUsed(path) || !isWhole(path)) continue;
    versions.push_back(
        {folder, version, numberOf(version), archiveHashIn(path + hashFolderSuffix)});
  }
  std::stable_sort(versions.begin(), versions.end(),
                   [](const auto& a, const auto& b) { return a.number > b.number; });
  return versions;
}

}  // namespace

long numberOf(const std::string& version) { return std::strtol(version.c_str(), nullptr, 10); }

std::vector<InstalledVersion> applicationVersions(const Installation& installation) {
  return versionsOf(installation, installation.appName, "",
                    [](const std::string& path) { return !namesIn(path).empty(); });
}

std::vector<InstalledVersion> updaterVersions(const Installation& installation) {
  return versionsOf(installation, kUpdaterName, "", [](const std::string& path) {
    return holdsLaunchFile(path) && !isUnfinished(path);
  });
}

std::vector<InstalledVersion> runtimeVersions(const Installation& installation) {
  const LogPause pause;  // What a start says of each.
  return versionsOf(installation, installation.jreName, kBundleSuffix, isWholeJre);
}

std::vector<Trial> readTrials(const std::string& updatesFolder) {
  const std::optional<std::string> bytes =
      readPlainFile(joinPath(updatesFolder, kTrialsFile), kMaxTrialsBytes);
  if (!bytes) return {};
  StrictRecords records(*bytes);
  if (records.number("Trials VER") != 1) return {};
  std::vector<Trial> trials;
  const std::int64_t count = records.number("Trial Count", kMaxTrials);
  for (std::int64_t i = 0; i < count && !records.isRefused(); ++i) {
    Trial trial;
    trial.folder = records.text("Trial Version", kMaxTrialText);
    trial.archiveSha256 = records.text("Trial Archive", kMaxTrialText);
    records.number("Trial Tries");
    const std::string state = records.text("Trial State", kMaxTrialText);
    trial.isGood = state == "GOOD";
    trial.isBlocked = state == "BLOCKED" || state == "TOLD";
    if (!records.isRefused()) trials.push_back(trial);
  }
  return trials;
}

bool isBlocked(const std::vector<Trial>& trials, const std::string& folder,
               const std::string& archiveSha256) {
  return std::any_of(trials.begin(), trials.end(), [&](const Trial& trial) {
    if (!trial.isBlocked) return false;
    return trial.archiveSha256.empty() ? trial.folder == folder
                                       : trial.archiveSha256 == archiveSha256;
  });
}

}  // namespace quillory::update
