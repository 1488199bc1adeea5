// Functions for programs outside of this tree, which know them by these names and signatures.
// Nothing in the launcher calls them: behind each stands one over std::string of
// install/version_folders.h or install/install_locations.h, whose contract is its own.
#pragma once

namespace quillory {

// Both write to `dst` (kPathCapacity bytes) and return it; a path that does not fit ends the
// process, as setPath() says.

/// versionFolder().
char* makeAppFolder(char* dst, const char* master, const char* name, const char* version);
/// temporaryFolder().
char* makeAppTempFolder(char* dst, const char* master);

/// 0 when the folder is one of `name`; else how componentOfFolder() and `name` compare, or -1 with
/// fewer than two '-'.
int checkAppFolderName(const char* folderName, const char* name);
/// versionOfFolder(), or -1.
long pickVersionFromAppFolderName(const char* folderName);
/// newestVersionFolder() in a new block (free() it), or null.
char* pickAndAllocLatestFromMaster(const char* master, const char* name);

/// sharedDirectoryFor() this user, in a new block of kPathCapacity bytes (free() it), or null.
char* locateSharedDirectory(const char* installType);

}  // namespace quillory
