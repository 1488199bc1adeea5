// How the folders of installed components are named inside the master folder, and which is the
// newest.
//
//   Quillory-<name>-<version>-complete                       a version folder
//   Quillory-<JRE name>-<version>-complete.plugin            a JRE's bundle beside its folder
//   QuilloryTemp-<seconds>-<count>-app                       while a component is extracted
#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillory {

/// The component name of the updater that the launcher starts.
inline constexpr char kUpdaterName[] = "Quillory";

/// Whether `name` and `version` can make the name of a folder inside its parent: neither is "..",
/// none holds a '/' or a zero byte, and it is no longer than file systems take
/// ("Quillory-<name>-<version>-complete", 255 bytes).
bool isUsableInFolderName(std::string_view name, std::string_view version);
/// The same for a JRE, whose bundle has the longest name ("...-complete.plugin").
bool isUsableAsJre(std::string_view name, std::string_view version);

/// The path of a version folder in `master`; nothing is created.
std::string versionFolder(const std::string& master, const std::string& name,
                          const std::string& version);
/// The path of a new temporary folder in `master`; nothing is created. Its name counts seconds and
/// the entries of `master`: two calls in one second, with nothing made in between, give the same.
/// Where something stands at such a path already, it counts on, up to a hundred times.
std::string temporaryFolder(const std::string& master);

/// The component that a version folder is of: the text between the first and the second '-', so
/// never a name with a '-'; nothing with fewer than two '-'.
std::optional<std::string> componentOfFolder(std::string_view folderName);
/// The number between the second and the third '-', 0 when it is none; nothing without a third '-'.
std::optional<long> versionOfFolder(std::string_view folderName);

/// The name of the folder of `name` with the highest version, or nothing. Folders are looked at in
/// byte order of their names, whatever the file system; of equal versions the first stays, so a
/// JRE's plain folder comes before its bundle. Those that another user could have written are
/// passed over, with a line in the log, where that matters: see mayBeUsed().
std::optional<std::string> newestVersionFolder(const std::string& master, const std::string& name);

/// The same of those whose path `isWhole` accepts; the log names the others.
std::optional<std::string> newestVersionFolder(
    const std::string& master, const std::string& name,
    const std::function<bool(const std::string& folder)>& isWhole);

/// The same but for the folders with these names; the log names those, too.
std::optional<std::string> newestVersionFolder(const std::string& master, const std::string& name,
                                               const std::vector<std::string>& passedOver);

/// Number of entries in a folder's listing, "." and ".." included; 0 when it cannot be opened.
long countFolderEntries(const std::string& folder);

}  // namespace quillory
