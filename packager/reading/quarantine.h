// What a system notes of files that came over the network.
#pragma once
#include <string>

namespace quillory::pack {

/// Whether macOS has noted that `path` was downloaded: it asks before it starts such a bundle, and
/// starts it from a place of its own. No other system notes it so.
bool isQuarantined(const std::string& path);

/// Whether `path` lies in such a place: a copy that nobody may write to, at another path with each
/// start.
bool isTranslocated(const std::string& path);

}  // namespace quillory::pack
