// Lists of Java's classes that a start needs, for the archive that a JVM maps instead of loading
// them one by one. The launcher makes it from the runtime's own list, lib/classlist, when it
// installs the runtime.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace quillory::pack {

/// Where a runtime has its list, in its folder.
inline constexpr char kRuntimeClassList[] = "lib/classlist";

/// Adds what the updater uses to the runtime's own list of classes. Without it these few are loaded
/// one by one at every start, which takes a millisecond. A runtime without a list is left as it is.
/// Throws PackError when the list cannot be read or written.
void addUpdaterClasses(const std::string& javaHome);

/// The names in a list, sorted and each once: as a JVM writes it (-XX:DumpLoadedClassList), as a
/// runtime has it, or as it was kept here. What names no class, and classes of a loader of the
/// application's own, which no such archive holds, are passed over.
std::vector<std::string> classNamesIn(std::string_view list);

/// Those of `names` that are classes of the runtime; all of them where it does not tell which it
/// has. Throws PackError when the runtime cannot be read.
std::vector<std::string> classesOf(const std::string& javaHome,
                                   const std::vector<std::string>& names);

/// Those of `names` that `list` does not have.
std::vector<std::string> missingIn(std::string_view list, const std::vector<std::string>& names);

/// `list`, and behind it those of `names` that it does not have.
std::string extendedClassList(std::string list, const std::vector<std::string>& names);

}  // namespace quillory::pack
