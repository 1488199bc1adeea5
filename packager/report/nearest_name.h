// Suggests what somebody may have meant.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// The known name that takes the fewest typing mistakes to become `name`, or "" when none is near.
std::string nearestName(const std::string& name, const std::vector<std::string>& known);

}  // namespace quillory::pack
