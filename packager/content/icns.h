// Pictures: those of the splash, and icons of application bundles.
#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "packager/report/findings.h"

namespace quillory::pack {

/// What keeps these bytes from being a picture for the splash: they are neither a PNG nor a JPEG,
/// as far as the header tells, or the launcher does not show so large a picture. None when it does.
std::optional<Finding> flawOfPicture(const Subject& picture, std::string_view bytes);

/// The same of an icon: an icns file, or a PNG picture of a size that icons have.
std::optional<Finding> flawOfIcon(const Subject& icon, std::string_view bytes);

/// The bytes of an icon file: `path` itself when it is one, else an icon that holds the PNG picture
/// at `path`. Throws PackError for what flawOfIcon() finds.
std::string icnsFrom(const std::string& path);

}  // namespace quillory::pack
