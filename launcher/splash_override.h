// The picture of the parameters file in place of the shipped one.
#pragma once
#include <optional>
#include <string>

namespace quillory {

/// Replaces the picture at `splashPath` by `image`, where `canOverride` of the tail is "1" and the
/// image is not empty. A link that stands there is replaced, never followed: the path may lie in a
/// folder that all users share. A file that cannot be replaced is an error in the log, and stays.
void saveOverrideImageIfAllowed(const std::string& canOverride,
                                const std::optional<std::string>& image,
                                const std::string& splashPath);

}  // namespace quillory
