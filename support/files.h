// File and folder operations of an installation. Every step is logged, so that a log shows at which
// file an installation stopped; failures are reported by return values and log lines only.
#pragma once
#include <string>

namespace quillory {

/// What the platform does for files.
struct FileCalls {
  /// Moves a file or folder to a path that must not exist, across file systems if need be; false
  /// with a text for the log when it cannot.
  bool (*moveItem)(const char* from, const char* to, std::string& error);
};
extern FileCalls fileCalls;

/// Empties `folder`; the folder itself stays. 0 when it could be opened, even if some entries could
/// not be removed; 1 otherwise. Entries named '.' and one more character are left alone by intent.
/// A symbolic link is removed, never followed.
int deleteFolder(const char* folder);

/// Removes `path` with everything in it, whatever the names, following no link and without a log
/// line a file. True when nothing is left there.
bool removeTree(const char* path);

/// Copies what is in `source` into `target`, which must exist; modes and times are not carried
/// over. 0, or the value of the first failure, at which it stops.
int copyFolder(const char* source, const char* target);

/// 0, or 1 when a file cannot be opened, read or written to its end (logged).
int copyFile(const char* source, const char* target);

/// Moves a file or folder into place: empties what is there, renames, tries again for three
/// seconds, and copies when nothing else helps. The outcome is in the log only.
void doRename(const char* oldPath, const char* newPath);

/// 0 when the folder exists or was made, with mode 0777 whatever the umask; else -1. One level.
int makeDir(const char* path);

/// As makeDir(), with the missing folders above it. Only for folders outside the installation.
int makeDirWithParents(const char* path);

/// "chmod -R 755" on `path`, through the shell: the status as system() returns it.
int chmodR755(const char* path);
/// "chmod 777" on `path`, through the shell: the status as system() returns it.
int chmod777(const char* path);

/// Whether `path` can be opened for reading; also true for a folder.
bool doesFileExist(const char* path);
/// Always true: it only logs. Callers that need to know open the folder.
bool doesDirExist(const char* path);

/// A real test for a folder, without a log line.
bool isFolder(const char* path);

}  // namespace quillory
