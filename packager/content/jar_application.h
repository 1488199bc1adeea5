// Jars where build tools put them, and where people keep those of others.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/content/found_application.h"

namespace quillory::pack {

/// The jars in `folder` and in the usual folders below it, what can be started first, with those
/// that a manifest names on its class path; none where there is no jar. A finished jar that nothing
/// is built beside has its folders as files.
std::optional<FoundApplication> findJarApplication(const std::string& folder);

}  // namespace quillory::pack
