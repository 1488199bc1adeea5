// Shows what is in a file of ours, as a tree of values: for people as text, for scripts as JSON.
#pragma once
#include <nlohmann/json.hpp>
#include <string>

#include "packager/reading/file_kind.h"
#include "packager/report/findings.h"

namespace quillory::pack {

using Json = nlohmann::ordered_json;

/// Everything in the file. `kind` kUnknown: found out. Throws PackError when it is none of ours.
Json inspectFile(const std::string& path, FileKind kind, Findings& findings);

}  // namespace quillory::pack
