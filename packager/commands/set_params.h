// Changes dynamic parameters of a finished bundle.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"
#include "packager/reading/params_view.h"

namespace quillory::pack {

/// Each change is "NAME=VALUE"; a name that is there gets the new value, another one is added.
/// `removed` are names to take away. Throws PackError for what makes no sense and for a damaged
/// file, which then stays as it is; the file is written once, at the end.
ParamsView setParameters(const std::string& bundleOrFile, const std::vector<std::string>& changes,
                         const std::vector<std::string>& removed);

/// "set": the same, and prints what the bundle has then.
Command setCommand();

}  // namespace quillory::pack
