// What a folder holds.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory {

/// Every name in `folder`, "." and ".." included, in the order in which the system tells them;
/// nothing when it cannot be opened.
std::optional<std::vector<std::string>> listFolder(const char* folder);

/// What listFolder() gives but "." and "..", in byte order; none when it cannot be opened.
std::vector<std::string> sortedNamesIn(const std::string& folder);

/// The names in `folder` that a walk visits, in the order in which the system tells them; nothing
/// when it cannot be opened. Names of one or two bytes that begin with '.' are left out: "." and
/// "..", and by intent also a name such as ".a".
///
/// The whole list comes first, so that a deep walk holds no open folder a level, and what the walk
/// makes or removes cannot change what it visits.
std::optional<std::vector<std::string>> listForWalk(const char* folder);

}  // namespace quillory
