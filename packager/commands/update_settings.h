// The settings that installations look for updates by, as the configuration has them.
#pragma once
#include <string>

#include "packager/commands/update_keys.h"
#include "packager/config/config.h"

namespace quillory::pack {

/// The bytes of the file in the updater's archive. Throws PackError when its reader would refuse
/// them.
std::string updateSettingsOf(const Config& config, const UpdateKeys& keys);

}  // namespace quillory::pack
