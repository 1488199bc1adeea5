// Writes the update settings "QuilloryUpdate" of an updater's archive, as formats/update_settings.h
// reads them; docs/formats/update-settings.md has the bytes.
#pragma once
#include <string>

#include "formats/update_settings_format.h"

namespace quillory::pack {

/// The bytes of the file. Throws PackError when its reader would refuse them, with its reason.
std::string updateSettingsBytes(const UpdateSettings& settings);

/// The same as a file, which gets its name when it is complete and flushed.
void writeUpdateSettings(const std::string& path, const UpdateSettings& settings);

}  // namespace quillory::pack
