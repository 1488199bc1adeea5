// Showing a file to the user, in the desktop's own program for that.
#pragma once
#include <string>

namespace quillory::platform {

/// Opens the folder of the file at `path`, where there is a program for it, and waits for nothing.
/// macOS selects the file in it.
void showFile(const std::string& path);

}  // namespace quillory::platform
