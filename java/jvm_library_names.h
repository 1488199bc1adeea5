// What the JVM library is called on this platform.
#pragma once
#include <span>

namespace quillory {

/// File names, in the order in which they are tried. CMake chooses the file that defines it.
std::span<const char* const> jvmLibraryNames();

}  // namespace quillory
