// Reads the update settings "QuilloryUpdate" of an installed updater.
// docs/formats/update-settings.md has the bytes.
#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "formats/update_settings_format.h"

namespace quillory {

struct UpdateSettingsResult {
  std::optional<UpdateSettings> settings;
  /// Why there are none, in words; "" also when there is no file, which is no fault.
  std::string refusal;
};

/// Reads the file at `path`, a link not followed.
UpdateSettingsResult readUpdateSettings(const std::string& path);
/// The same of bytes that are there already.
UpdateSettingsResult readUpdateSettingsBytes(std::string_view bytes);

}  // namespace quillory
