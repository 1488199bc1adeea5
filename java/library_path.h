// Where a JVM looks for native libraries.
#pragma once
#include <string>

namespace quillory {

/// What a JVM would have as its java.library.path if nothing was said about it, folders joined with
/// ':'. One that is given replaces all of it.
std::string standardLibraryPath();

}  // namespace quillory
