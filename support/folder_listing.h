// What a folder holds.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory {

/// The names in `folder` in byte order, without "." and ".."; nothing, with errno, when it cannot
/// be opened.
std::optional<std::vector<std::string>> listFolder(const std::string& folder);

/// As listFolder(), and none where there is nothing to be told.
std::vector<std::string> namesIn(const std::string& folder);

/// How many entries the system tells of `folder`, "." and ".." included; 0 when it cannot be
/// opened.
long countEntries(const std::string& folder);

/// The names in `folder` that a walk visits, in the order in which the system tells them; nothing
/// when it cannot be opened. Names of one or two bytes that begin with '.' are left out: "." and
/// "..", and by intent also a name such as ".a".
///
/// The whole list comes first, so that a deep walk holds no open folder a level, and what the walk
/// makes or removes cannot change what it visits.
std::optional<std::vector<std::string>> listForWalk(const std::string& folder);

}  // namespace quillory
