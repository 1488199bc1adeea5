// Permissions of an installation. As ever it is opened to every user, since whoever starts the
// application next may have to replace it; or only its owner writes to it.
//
// A mode is set on what belongs to this user, and to nobody's harm: somebody else's file or folder
// is left alone, also by the administrator, and so is a file that has a second name, which may be a
// private one elsewhere. A link that another user has made is not followed, except one of the
// administrator. What is left alone counts as a failure, unless it has the mode already.
#pragma once
#include <string>

namespace quillory {

class NewFile;

enum class InstallationModes {
  kOpenToAll,    ///< 0777 for folders and tools; new files as the umask says
  kOwnerWrites,  ///< 0755 instead of 0777, and 0644 for new files
  /// The same, and a component that somebody else could have written is not used.
  kOnlyTrustedAreUsed,
};

/// For the whole process. Chosen once, before anything is installed; kOpenToAll until then.
void chooseInstallationModes(InstallationModes modes);
/// Whether that is kOnlyTrustedAreUsed.
bool usesOnlyTrusted();
/// The mode of folders and tools: 0777 or 0755.
unsigned installationMode();
/// What new files of an installation are made with, less the umask: 0666 or 0644.
unsigned installationFileMode();

// These log a command and do what it does: "[ChMod] Executing chmod 777 "<path>"". The result is
// that of system() with this command: 0, or that of a command which ended with status 1.

/// "chmod -R 755": `path` and all in it; links in it are not followed.
int chmodR755(const char* path);

/// The same of a file that is being written.
int chmodR755(NewFile& file);

/// "chmod 777", or "chmod 755" where only the owner writes.
int chmod777(const char* path);
/// The same for what ought to be a folder: anything else, and every link, is left alone.
int chmod777Folder(const char* path);

/// As chmod777(), without a log line: whether `path` has the mode now.
bool openAsInstalled(const std::string& path);
/// As chmodR755(), without a log line.
int setModesBelow(const std::string& path, unsigned mode);

/// Whether a link of another user, who is not the administrator, stands at `path`.
bool isForeignLink(const std::string& path);

/// Whether `path` is a folder that nobody but this user and the administrator writes to; also when
/// nobody has to ask, which is so without kOnlyTrustedAreUsed.
bool mayBeUsed(const std::string& path);

/// From now on each folder directly in `parent` whose name begins with `prefix` is made for its
/// owner alone (0700): makeDir(), makeNewDir() and chmod777() leave it so, without a log line. ""
/// as parent ends that, and leaves the folders as they are.
void keepFoldersClosed(const std::string& parent, const std::string& prefix);
/// Whether `path` is such a folder.
bool isKeptClosed(const std::string& path);

}  // namespace quillory
