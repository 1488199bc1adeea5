// The classes of Java that a start needs, for the archive that a JVM maps instead of loading them.
#pragma once
#include <string>

namespace quillory::pack {

/// Adds what the updater uses to the runtime's own list of classes, lib/classlist, from which the
/// archive of classes is made when the runtime is installed. Without it these few are loaded one by
/// one at every start, which takes a millisecond. A runtime without a list is left as it is. Throws
/// PackError when the list cannot be read or written.
void addUpdaterClasses(const std::string& javaHome);

}  // namespace quillory::pack
