#include "update/installation.h"

#include <algorithm>
#include <vector>

#include "formats/launch_properties_format.h"
#include "formats/property_block.h"
#include "formats/update_url.h"
#include "install/install_locations.h"
#include "install/version_folders.h"
#include "support/folder_listing.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr std::size_t kMaxPropertiesBytes = 16 * 1024 * 1024;

std::string_view nextText(std::string_view& bytes) {
  const std::size_t end = std::min(bytes.find('\0'), bytes.size());
  const std::string_view text = bytes.substr(0, end);
  bytes.remove_prefix(std::min(end + 1, bytes.size()));
  return text;
}

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash);
}

std::string withoutFinalSlash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

// Names begin with the milliseconds, which have as many digits for a long time to come.
std::optional<std::string> newestBeside(const std::string& path) {
  const std::string folder = parentOf(path);
  std::vector<std::string> names = namesIn(folder);
  std::erase_if(names, [](const auto& name) { return !name.starts_with(kLaunchPropertiesPrefix); });
  for (auto name = names.rbegin(); name != names.rend(); ++name)
    if (auto bytes = readPlainFile(joinPath(folder, *name), kMaxPropertiesBytes)) return bytes;
  return std::nullopt;
}

class Values {
 public:
  explicit Values(const LaunchProperties& properties) : properties_(properties) {}
  std::string of(std::string_view prefix, std::string_view name) const {
    const auto found = properties_.find(std::string(prefix) + std::string(name));
    return found == properties_.end() ? "" : found->second;
  }
  std::string ofStart(std::string_view name) const { return of(kStaticPrefix, name); }
  std::string ofParameters(std::string_view name) const { return of(kDynamicPrefix, name); }

 private:
  const LaunchProperties& properties_;
};

std::string updateUrlIn(const Values& values) {
  const std::string told = values.ofStart("update_url");
  std::string url = told == kDynamicUpdateUrl ? values.ofParameters("update_url") : told;
  if (isInvalidUpdateURL(url.c_str())) return "";
  if (!url.empty() && !url.ends_with('/')) url += '/';
  return url;
}

// Every name that becomes part of a path.
bool hasUsableNames(const Installation& its) {
  return !its.appName.empty() && isUsableInFolderName(its.appName, "") &&
         isUsableAsJre(its.jreName, "") && isAbsolutePath(its.updaterFolder.c_str()) &&
         !its.masterFolder.empty();
}

Installation installationOf(const Values& values, const std::string& ownFolder) {
  Installation its;
  its.appName = values.ofStart("app_name");
  its.launcher = values.ofStart("launched_from_dynprops");
  its.updaterFolder = withoutFinalSlash(values.ofStart("app_dir"));
  its.masterFolder = parentOf(its.updaterFolder);
  its.ownFolder = ownFolder.empty() ? its.masterFolder : ownFolder;
  its.jreName = values.ofStart("jre_name");
  its.updateUrl = updateUrlIn(values);
  its.bundleKey = values.ofStart("qysig_public_key");
  its.bundleAppVersion = values.ofStart("wrapper_app_version");
  its.bundleUpdaterVersion = values.ofStart("wrapper_gu_version");
  its.isHardened = values.ofParameters("hardened") == "true";
  its.isForAllUsers = isForAllUsers(values.ofStart("install_type"));
  its.mode = values.ofParameters("update_mode");
  its.channel = values.ofParameters("update_channel");
  its.pin = values.ofParameters("update_pin");
  return its;
}

}  // namespace

LaunchProperties launchPropertiesOf(std::string_view bytes) {
  LaunchProperties properties;
  while (!bytes.empty()) {
    const std::string key(nextText(bytes));
    const std::string_view value = nextText(bytes);
    properties[key] = value == kStoredForEmpty ? "" : value;
  }
  return properties;
}

std::string Installation::updatesFolder() const { return joinPath(ownFolder, kUpdatesFolder); }

std::string Installation::inUpdates(std::string_view name) const {
  return joinPath(updatesFolder(), name);
}

std::optional<Installation> readInstallation(const std::string& path, const std::string& ownFolder,
                                             std::string& why) {
  std::optional<std::string> bytes = readPlainFile(path, kMaxPropertiesBytes);
  if (!bytes) bytes = newestBeside(path);
  if (!bytes) {
    why = "there are no launch properties at " + path;
    return std::nullopt;
  }
  const LaunchProperties properties = launchPropertiesOf(*bytes);
  Installation its = installationOf(Values(properties), ownFolder);
  if (hasUsableNames(its)) return its;
  why = "the launch properties at " + path + " do not say what is installed, and where";
  return std::nullopt;
}

}  // namespace quillory::update
