// The version of this system that a release may ask for: that of macOS, or on Linux that of the C
// library.
#pragma once
#include <string>
#include <string_view>

namespace quillory::update {

/// "14.2.1", "2.36"; "" where it cannot be told.
std::string systemVersion();

/// Whether a system of the version `is` does for who asks for `asked`: number by number, where what
/// is missing is 0. "" asks for nothing, and what cannot be told does for nobody.
bool meetsMinimum(std::string_view is, std::string_view asked);

}  // namespace quillory::update
