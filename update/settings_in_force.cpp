#include "update/settings_in_force.h"

#include <algorithm>
#include <sstream>

#include "support/log.h"
#include "support/paths.h"
#include "support/plain_file.h"

namespace quillory::update {
namespace {

constexpr std::size_t kMaxConfBytes = 64 * 1024;

std::string trimmed(const std::string& text) {
  constexpr char kBlank[] = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

class Overriding {
 public:
  explicit Overriding(SettingsInForce& force) : force_(force) {}

  bool mode(const std::string& name, const char* whose) {
    const std::optional<UpdateMode> mode = updateModeOf(name);
    if (mode) force_.settings.mode = *mode;
    if (!mode) logMessage("[Update] %s names a mode that is none: %s\n", whose, name.c_str());
    return mode.has_value();
  }
  void channel(const std::string& name, const char* whose) {
    if (isChannelName(name)) {
      force_.settings.channel = name;
    } else {
      logMessage("[Update] %s names a channel that is none: %s\n", whose, name.c_str());
    }
  }

 private:
  SettingsInForce& force_;
};

void takeParameters(const Installation& installation, SettingsInForce& force) {
  Overriding overriding(force);
  if (!installation.mode.empty()) overriding.mode(installation.mode, "The parameter update_mode");
  if (!installation.channel.empty())
    overriding.channel(installation.channel, "The parameter update_channel");
  force.pin = installation.pin;
}

void takeLine(const std::string& line, const std::string& path, SettingsInForce& force) {
  const std::string text = trimmed(line.substr(0, line.find('#')));
  if (text.empty()) return;
  const std::size_t sign = text.find('=');
  const std::string key = trimmed(text.substr(0, sign));
  const std::string value = sign == std::string::npos ? "" : trimmed(text.substr(sign + 1));
  Overriding overriding(force);
  if (key == "mode") {
    force.isAdministrators = true;
    // Whoever wrote the line did not want what the packager wants.
    if (!overriding.mode(value, path.c_str())) force.settings.mode = UpdateMode::kOff;
  } else if (key == "channel") {
    overriding.channel(value, path.c_str());
  } else if (key == "pin") {
    force.pin = value;
  } else {
    logMessage("[Update] %s has a line that is not understood: %s\n", path.c_str(), text.c_str());
  }
}

void takeAdministrators(const std::string& path, SettingsInForce& force) {
  const std::optional<std::string> text = readPlainFile(path, kMaxConfBytes);
  if (!text) return;
  logMessage("[Update] The administrator's settings are %s\n", path.c_str());
  std::istringstream lines(*text);
  for (std::string line; std::getline(lines, line);) takeLine(line, path, force);
}

std::string whyOffIn(const SettingsInForce& force, const UpdateSettingsResult& read,
                     const Installation& installation) {
  if (!read.settings && read.refusal.empty())
    return "this application was packed without settings for updates";
  if (!read.settings) return "the settings for updates are refused: " + read.refusal;
  if (installation.updateUrl.empty()) return "this application has no update URL";
  if (force.settings.mode != UpdateMode::kOff) return "";
  return force.isAdministrators ? "the administrator has switched updates off"
                                : "updates are switched off";
}

}  // namespace

const char* const kAdministratorsFolder = QUILLORY_ADMINISTRATORS_FOLDER;

SettingsInForce settingsInForce(const Installation& installation, const std::string& chosenChannel,
                                const std::string& administratorsFolder) {
  const UpdateSettingsResult read =
      readUpdateSettings(joinPath(installation.updaterFolder, kUpdateSettingsFileName));
  SettingsInForce force;
  if (read.settings) force.settings = *read.settings;
  takeParameters(installation, force);
  if (!chosenChannel.empty()) Overriding(force).channel(chosenChannel, "The user's choice");
  takeAdministrators(joinPath(administratorsFolder, installation.appName + ".conf"), force);
  force.whyOff = whyOffIn(force, read, installation);
  return force;
}

std::vector<std::string> trustedKeys(const std::vector<std::string>& named,
                                     const UpdateSettings& settings,
                                     const Installation& installation) {
  if (!named.empty()) return named;
  if (!settings.keys.empty()) return settings.keys;
  if (!installation.bundleKey.empty()) return {installation.bundleKey};
  return {};
}

std::vector<std::string> archiveKeys(const std::vector<std::string>& named,
                                     const UpdateSettings& settings,
                                     const Installation& installation) {
  std::vector<std::string> keys;
  const auto add = [&](const std::string& key) {
    if (!key.empty() && std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
  };
  for (const std::string& key : named) add(key);
  for (const std::string& key : settings.keys) add(key);
  add(installation.bundleKey);
  return keys;
}

}  // namespace quillory::update
