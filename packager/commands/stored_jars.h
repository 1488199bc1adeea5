// The application's jars without compression inside, beside the ones that they were made from.
#pragma once
#include <string>
#include <vector>

#include "packager/report/reporter.h"

namespace quillory::pack {

/// The paths of jars with the same names in the same order: each one made below `workFolder` by
/// storeJar(), or the original where that leaves a jar as it is, which the reporter tells. Throws
/// PackError as storeJar() does.
std::vector<std::string> storedJars(const std::vector<std::string>& jars,
                                    const std::string& workFolder, Reporter& reporter);

}  // namespace quillory::pack
