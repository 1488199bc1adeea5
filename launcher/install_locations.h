// Where installed components lie, how their folders are named, and which is the newest.
//
//   <shared directory>/Quillory-<App Name>/                    the master folder
//     Quillory-<name>-<version>-complete                       a version folder
//     Quillory-<JRE name>-<version>-complete.plugin            a JRE's bundle beside its folder
//     QuilloryTemp-<seconds>-<count>-app                       while a component is extracted
#pragma once
#include <string>

namespace quillory {

/// The component name of the updater that the launcher starts.
inline constexpr char kUpdaterName[] = "Quillory";

/// The directory that all users, or this user, keep applications in, by the "Install Type" of the
/// tail; a new block of kPathCapacity bytes, free() it. The user's is created, with its parents.
char* locateSharedDirectory(const char* installType);

/// <shared directory>/Quillory-<appName>
std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName);

/// Both write to `dst` (kPathCapacity bytes) and return it; they create nothing.
char* makeAppFolder(char* dst, const char* master, const char* name, const char* version);
char* makeAppTempFolder(char* dst, const char* master);

/// 0 when the text between the first and the second '-' is `name`; never for a name with a '-'.
int checkAppFolderName(const char* folderName, const char* name);
/// The number between the second and the third '-'; -1 without a third.
long pickVersionFromAppFolderName(const char* folderName);

/// The name of the folder of `name` with the highest version, in a new block (free() it), or null.
/// Folders are looked at in byte order of their names; of equal versions the first stays.
char* pickAndAllocLatestFromMaster(const char* master, const char* name);

/// Number of entries in a folder's listing, "." and ".." included; 0 when it cannot be opened.
long countFolderEntries(const char* folder);

}  // namespace quillory
