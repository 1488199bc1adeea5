// Which programs run for a test, whoever started them and whether they are anybody's children.
#pragma once
#include <string>
#include <vector>

namespace quillory::testing {

/// The names of the programs that have `folder` in their environment, or their root folder below
/// it; one for each process.
std::vector<std::string> programsOf(const std::string& folder);

}  // namespace quillory::testing
