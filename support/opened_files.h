// Files that the user opens with the application: by a double click, from a menu, or dropped onto
// its icon. Those that come before the launch become arguments of the main class, the others go the
// way of URLs (open_requests.h).
#pragma once
#include <string>
#include <vector>

namespace quillory {

/// The user has opened the file at `path`; says so in the system log. False where that came after
/// the launch, and nobody listens. Any thread.
bool openFile(const std::string& path);

/// The paths that have come so far, in their order, for the launch: from now on it is too late for
/// the arguments. Any thread.
std::vector<std::string> takeOpenedFiles();

/// Forgets them, and that a launch has asked; for tests.
void forgetOpenedFiles();

}  // namespace quillory
