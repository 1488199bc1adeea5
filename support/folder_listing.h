// What the recursive walks over folders share.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillory {

/// The names in `folder` that a walk visits, in the order in which the system tells them; nothing
/// when it cannot be opened. Names of one or two bytes that begin with '.' are left out: "." and
/// "..", and by intent also a name such as ".a".
///
/// The whole list comes first, so that a deep walk holds no open folder a level, and what the walk
/// makes or removes cannot change what it visits.
std::optional<std::vector<std::string>> listForWalk(const char* folder);

/// `folder`/`name`, without doubling a '/' at the end of `folder`.
std::string pathInside(std::string_view folder, std::string_view name);

}  // namespace quillory
