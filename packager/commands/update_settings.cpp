#include "packager/commands/update_settings.h"

#include "install/install_locations.h"
#include "packager/writing/update_settings_writer.h"

namespace quillory::pack {

std::string updateSettingsOf(const Config& config, const UpdateKeys& keys) {
  const UpdateConfig& update = config.update;
  UpdateSettings settings;
  settings.channel = update.channel;
  settings.mode = update.mode;
  settings.atStartSeconds = update.atStartSeconds;
  settings.checkHours = update.checkHours;
  settings.keepVersions = update.keepVersions;
  settings.mirrors = update.mirrors;
  settings.keys = keys.trusted;
  if (isForAllUsers(config.install.type) && isMirrorUrl(update.url)) {
    settings.updateUrl = update.url;
    settings.runtimeName = config.runtime.name;
  }
  return updateSettingsBytes(settings);
}

}  // namespace quillory::pack
