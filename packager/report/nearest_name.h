// Suggests what somebody may have meant.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// The known name that takes the fewest typing mistakes to become `name`, the first of equals; ""
/// when none is near. Near is two mistakes, in long names one in three letters; capitals, dashes
/// and underlines are none, and an exchange of neighbours is one.
std::string nearestName(const std::string& name, const std::vector<std::string>& known);

}  // namespace quillory::pack
