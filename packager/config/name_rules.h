// Which names folders and files of an installation can have.
#pragma once
#include <optional>
#include <string>

#include "packager/report/findings.h"

namespace quillory::pack {

/// What is wrong with a name that the folders of an application or runtime are named after; none
/// when nothing is. `what` says it without its subject ("holds a ..."), and there is no place.
std::optional<Finding> flawOfFolderName(const std::string& name);

/// The same of the name of the bundle's executable.
std::optional<Finding> flawOfExecutableName(const std::string& name);

/// Whether two names are one on a disk that ignores the case, as macOS has it. Only ASCII letters
/// are compared so.
bool isSameOnDisk(const std::string& a, const std::string& b);

}  // namespace quillory::pack
