// The picture of the parameters file in place of the shipped one.
#pragma once
#include <optional>
#include <string>

namespace quillory {

/// Replaces the picture at `splashPath` by `image`, where `canOverride` of the tail is "1" and the
/// image is not empty. A link that stands there is replaced, never followed: the path may lie in a
/// folder that all users share. What cannot be removed stays, and an image that cannot be written
/// whole is not left there; either is an error in the log.
void saveOverrideImageIfAllowed(const std::string& canOverride,
                                const std::optional<std::string>& image,
                                const std::string& splashPath);

}  // namespace quillory
