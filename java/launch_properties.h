// The launch-properties file, and the JVM options remembered from the last successful start.
#pragma once
#include <string>
#include <vector>

#include "formats/property_block.h"

namespace quillory {

/// Writes the path of a new launch-properties file in `folder` to `dst` (kPathCapacity bytes).
char* makeLaunchPropertiesFile(char* dst, const char* folder);

/// Reads the options of the file at `lsoPath` (empty: none is looked for) and adds them to `block`.
std::vector<std::string> readRememberedOptions(const std::string& lsoPath, PropertyBlock& block);

/// Writes `block` to a new file in `folder` and returns its path. Ends the process with
/// kExitNoProperties when that fails for good.
std::string writeLaunchProperties(const PropertyBlock& block, const std::string& folder);

}  // namespace quillory
