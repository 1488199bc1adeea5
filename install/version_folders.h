// How the folders of installed components are named inside the master folder, and which is the
// newest.
//
//   Quillory-<name>-<version>-complete                       a version folder
//   Quillory-<JRE name>-<version>-complete.plugin            a JRE's bundle beside its folder
//   QuilloryTemp-<seconds>-<count>-app                       while a component is extracted
#pragma once
#include <string>
#include <string_view>

namespace quillory {

/// The component name of the updater that the launcher starts.
inline constexpr char kUpdaterName[] = "Quillory";

/// Whether `name` and `version` can make the name of a folder inside its parent: neither is "..",
/// none holds a '/' or a zero byte, and it is no longer than file systems take
/// ("Quillory-<name>-<version>-complete.plugin").
bool isUsableInFolderName(std::string_view name, std::string_view version);

/// Both write to `dst` (kPathCapacity bytes) and return it; they create nothing.
char* makeAppFolder(char* dst, const char* master, const char* name, const char* version);
/// The name counts seconds and the entries of `master`: two calls in one second, with nothing made
/// in between, give the same name.
char* makeAppTempFolder(char* dst, const char* master);

/// 0 when the text between the first and the second '-' is `name`, so never for a name with a '-';
/// else how the two compare, or -1 with fewer than two '-'.
int checkAppFolderName(const char* folderName, const char* name);
/// The number between the second and the third '-', 0 when it is none; -1 without a third '-'.
long pickVersionFromAppFolderName(const char* folderName);

/// The name of the folder of `name` with the highest version, in a new block (free() it), or null.
/// Folders are looked at in byte order of their names, whatever the file system; of equal versions
/// the first stays, so a JRE's plain folder comes before its bundle.
char* pickAndAllocLatestFromMaster(const char* master, const char* name);

/// Number of entries in a folder's listing, "." and ".." included; 0 when it cannot be opened.
long countFolderEntries(const char* folder);

}  // namespace quillory
