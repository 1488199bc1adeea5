// Shows what is in a file of ours, as a tree of values: for people as text, for scripts as JSON.
#pragma once
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "packager/commands/command.h"
#include "packager/reading/file_kind.h"
#include "packager/report/findings.h"

namespace quillory::pack {

using Json = nlohmann::ordered_json;

/// Everything in the file. `kind` kUnknown: found out. Throws PackError when it is none of ours.
Json inspectFile(const std::string& path, FileKind kind, Findings& findings);

/// "inspect": prints it. Fails when something in the file is wrong, with all that could be read.
Command inspectCommand();

}  // namespace quillory::pack
