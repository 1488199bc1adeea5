// File and folder operations of an installation. Every step is logged, so that a log shows at which
// file an installation stopped; failures are reported by return values and log lines only, and
// nothing is rolled back. For the start-up thread only. The paths may have any length.
#pragma once
#include <string>

#include "support/file_copy.h"
#include "support/file_modes.h"

namespace quillory {

/// Empties `folder`; the folder itself stays. 0 when it could be opened, even if some entries could
/// not be removed (logged); 1 otherwise. Entries named '.' and one more character are left alone by
/// intent. A link is removed like a file, never followed, also one that takes the place of a folder
/// meanwhile; a `folder` that is a link itself counts as one that cannot be opened.
int deleteFolder(const char* folder);

/// Removes `path` with everything in it, whatever the names, following no link and without a log
/// line a file. True when nothing is left there.
bool removeTree(const std::string& path);

/// Removes what is at `path` unless it is a folder; a link goes, and what it leads to stays.
/// Without a log line.
void removeFileOrLink(const std::string& path);

/// Moves a file or folder into place: empties what is there, renames, tries again ten times within
/// three seconds, and copies when nothing else helps (`oldPath` stays then). A link at `newPath` is
/// replaced. The outcome is in the log only.
void doRename(const char* oldPath, const char* newPath);

/// 0 when the folder exists or was made, with the mode of an installation's folders whatever the
/// umask; else -1. One level. A folder of ours that cannot be opened gets that mode, too. A link
/// counts as the folder that it leads to, unless another user has put it there: then -1, logged.
int makeDir(const char* path);

/// As makeDir(), for a folder that must not be there yet: -1, with errno, for whatever stands at
/// `path`. Nobody can have put anything into it.
int makeNewDir(const char* path);

/// Makes a folder as the system would, with `mode` less the umask, and the missing ones above it
/// with 0755; each that is made is logged. What is there stays as it is. Whether the folder is
/// there now. For folders outside the installation.
bool makeDirWithParents(const std::string& path, unsigned mode = 0755);

/// Whether `path` can be opened for reading (logged then); also true for a folder.
bool doesFileExist(const char* path);

/// Whether `path` can be opened as a folder, through a link too; without a log line.
bool isFolder(const std::string& path);

/// Whether a folder itself stands at `path`, not a link to one, whoever may enter it; without a log
/// line.
bool isRealFolder(const std::string& path);

/// Whether a link stands at `path`, wherever it leads; without a log line.
bool isLink(const std::string& path);

}  // namespace quillory
