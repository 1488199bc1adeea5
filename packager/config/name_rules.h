// Which names folders and files of an installation can have.
#pragma once
#include <optional>
#include <string>

#include "packager/report/findings.h"

namespace quillory::pack {

/// What is wrong with a name that the folders of an application or runtime are named after; none
/// when nothing is.
std::optional<Finding> flawOfFolderName(const Subject& subject, const std::string& name);

/// The same of the name of the bundle's executable.
std::optional<Finding> flawOfExecutableName(const Subject& subject, const std::string& name);

/// The name of the executable when none is given: the letters and digits of the application's name.
std::string executableNameFor(const std::string& applicationName);

/// Whether two names are one on a disk that ignores the case, as macOS has it. Only ASCII letters
/// are compared so.
bool isSameOnDisk(const std::string& a, const std::string& b);

}  // namespace quillory::pack
