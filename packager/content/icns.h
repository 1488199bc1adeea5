// Pictures: those of the splash, and icons of application bundles.
#pragma once
#include <string>
#include <string_view>

namespace quillory::pack {

/// Why these bytes are no PNG picture, as far as its first chunk tells: "is no PNG picture"; ""
/// when they are one.
std::string flawOfPicture(std::string_view bytes);

/// The same of an icon: an icns file, or a PNG picture of a size that icons have.
std::string flawOfIcon(std::string_view bytes);

/// The bytes of an icon file: `path` itself when it is one, else an icon that holds the PNG picture
/// at `path`. Throws PackError for what flawOfIcon() finds.
std::string icnsFrom(const std::string& path);

}  // namespace quillory::pack
