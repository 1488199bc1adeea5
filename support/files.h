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
/// intent. A link is removed like a file, never followed; a `folder` that is a link itself counts
/// as one that cannot be opened.
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

/// 0 when the folder exists or was made, with mode 0777 whatever the umask; else -1. One level.
/// A path at which no folder can be opened gets mode 0777 in every case.
int makeDir(const char* path);

/// As makeDir(), with the missing folders above it; whether the folder is there now. Only for
/// folders outside the installation.
bool makeDirWithParents(const std::string& path);

/// Whether `path` can be opened for reading (logged then); also true for a folder.
bool doesFileExist(const char* path);

/// Whether `path` can be opened as a folder, through a link too; without a log line.
bool isFolder(const std::string& path);

/// Whether a link stands at `path`, wherever it leads; without a log line.
bool isLink(const std::string& path);

}  // namespace quillory
