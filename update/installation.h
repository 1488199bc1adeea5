// What a run of quillory-update is told of the application's installation: the launch properties of
// a start (docs/formats/launch-properties.md).
#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillory::update {

/// The properties of a start; of a key that is there more than once, the last value.
using LaunchProperties = std::map<std::string, std::string>;

LaunchProperties launchPropertiesOf(std::string_view bytes);

struct Installation {
  std::string appName;
  std::string launcher;       ///< of the start: its absolute path
  std::string updaterFolder;  ///< of the start
  std::string masterFolder;
  std::string ownFolder;  ///< where what is its user's is written
  std::string jreName;
  std::string updateUrl;  ///< in force, with its final '/'; "" where there is none
  std::string bundleKey;  ///< in hexadecimal, or ""
  std::string bundleAppVersion;
  std::string bundleUpdaterVersion;
  bool isHardened = false;
  bool isForAllUsers = false;
  // Of the parameters; "" where they say nothing.
  std::string mode;
  std::string channel;
  std::string pin;

  /// <own folder>/QYUpdates
  std::string updatesFolder() const;
  /// What is in it.
  std::string inUpdates(std::string_view name) const;
};

/// The installation of the start whose properties are in the file at `path`. Where that has been
/// cleared away since, as the next start does it, the newest one beside it says the same.
/// `ownFolder` may be "": the master folder then.
///
/// Nothing, with the reason in `why`, where there is none, or it does not say what every start
/// says.
std::optional<Installation> readInstallation(const std::string& path, const std::string& ownFolder,
                                             std::string& why);

}  // namespace quillory::update
