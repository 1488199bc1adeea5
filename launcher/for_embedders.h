// A function for programs outside of this tree, which know it by this name and signature. Nothing
// in the launcher calls it: it is told its path (launcher/bundle_paths.h).
#pragma once

namespace quillory {

/// The path of the running executable, cut at `size` - 1 bytes; -1 where the system has no link to
/// it (macOS), else 0.
int getPathToExe(char* buf, int size);

}  // namespace quillory
