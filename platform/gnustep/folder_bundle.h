// A bundle as it lies on the disk, and its code: what CFBundle does on macOS, without Foundation.
#pragma once
#include <string>

namespace quillory::platform {

/// Lives as long as the process, as does the code that it loads.
struct FolderBundle {
  std::string executable;
};

/// The bundle of a folder, which the caller never deletes, or null when there is none.
FolderBundle* openFolderBundle(const std::string& folder);

/// Loads Contents/MacOS/<executable>, named by CFBundleExecutable of Contents/Info.plist or else
/// like the folder without its extension. On failure false, with the reason for people.
bool loadFolderBundle(const FolderBundle& bundle, std::string& reason);

}  // namespace quillory::platform
