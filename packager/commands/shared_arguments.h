// Arguments that several commands take, in the same words.
#pragma once
#include <optional>
#include <string>

#include "packager/commands/command.h"

namespace quillory::pack {

/// Each sets what it is given, which has to live as long as the command.
Argument configArgument(std::string& path);
Argument compressionOption(std::optional<int>& level);
Argument targetOption(std::string& name);
Argument noCacheOption(bool& isWithout);

}  // namespace quillory::pack
