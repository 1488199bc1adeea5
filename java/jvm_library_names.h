// What the JVM library is called on this platform, and where runtimes have it.
#pragma once
#include <span>

namespace quillory {

/// File names, in the order in which they are tried. CMake chooses the file that defines it.
std::span<const char* const> jvmLibraryNames();

/// The folders of a Java home, or of the bundle around one, that are looked into for each name:
/// their paths from there, a '/' at both ends. From the same file.
std::span<const char* const> jvmLibraryFolders();

}  // namespace quillory
