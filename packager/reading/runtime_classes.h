// The classes that a Java runtime has, from the directory of its file lib/modules.
#pragma once
#include <optional>
#include <set>
#include <string>

namespace quillory::pack {

/// The names of all classes in the runtime's modules, as "java/lang/Object". None where that cannot
/// be told: there is no such file (before Java 9), it is of a layout that is not known here, in the
/// other order of bytes, or damaged. Throws PackError when the file cannot be read.
std::optional<std::set<std::string>> classesOfRuntime(const std::string& javaHome);

}  // namespace quillory::pack
