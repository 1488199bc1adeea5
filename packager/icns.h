// Icons of application bundles.
#pragma once
#include <string>

namespace quillory::pack {

/// The bytes of an icon file: `path` itself when it is one, else an icon that holds the PNG picture
/// at `path`. Throws PackError for a picture of a size that icons do not have.
std::string icnsFrom(const std::string& path);

}  // namespace quillory::pack
