// How this installation looks for updates, when all who may say something have said it: the
// packager's settings (docs/formats/update-settings.md), the parameters of the bundle, the user's
// choice of a channel, and the administrator, who has the last word.
#pragma once
#include <string>
#include <vector>

#include "formats/update_settings.h"
#include "update/installation.h"

namespace quillory::update {

struct SettingsInForce {
  UpdateSettings settings{};      ///< mode and channel as they are in force
  std::string pin{};              ///< the application's version to stay at; "" none
  bool isAdministrators = false;  ///< the mode is the administrator's
  /// Why there is nothing to look for, in words; "" when there is.
  std::string whyOff{};

  bool isOff() const { return !whyOff.empty(); }
};

/// Where administrators put their files, "<application>.conf".
extern const char* const kAdministratorsFolder;

/// `chosenChannel` is the user's, or "". What cannot be understood is logged and left out; but the
/// settings that cannot be read, and a mode of the administrator that is none, switch updates off.
SettingsInForce settingsInForce(const Installation& installation, const std::string& chosenChannel,
                                const std::string& administratorsFolder = kAdministratorsFolder);

/// The keys that a list may be signed with: those that a list has named, else those of the
/// settings, else the bundle's.
std::vector<std::string> trustedKeys(const std::vector<std::string>& named,
                                     const UpdateSettings& settings,
                                     const Installation& installation);

/// The keys that an archive may be signed with: those, and all that came before them. Which archive
/// it is a list has said under one of the former; after a change of keys there are some that the
/// old ones have signed.
std::vector<std::string> archiveKeys(const std::vector<std::string>& named,
                                     const UpdateSettings& settings,
                                     const Installation& installation);

}  // namespace quillory::update
