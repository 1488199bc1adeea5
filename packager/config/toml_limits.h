// What is asked of a TOML file before the library sees it, which goes down into nested values
// without an end, and counts the lines from the beginning for every value.
#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "packager/report/findings.h"

namespace quillory::pack {

inline constexpr std::size_t kLargestTomlFile = 1'000'000;
/// Lists and tables inside each other, and the parts of a dotted name.
inline constexpr int kDeepestToml = 32;
/// Values, and items of lists. The library takes 0.3 s for so many, and 10 s behind a megabyte of
/// comments.
inline constexpr int kMostTomlValues = 5'000;

/// What goes beyond these limits first, with its line; none in a file that the library may see.
/// What is no TOML is not noticed.
std::optional<Finding> excessOfToml(const std::string& file, std::string_view text);

}  // namespace quillory::pack
