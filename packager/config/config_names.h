// The names in a configuration: those of folders, of the executable, and the identifier.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// The names of a completed configuration that an installation could not have, or that stand for
/// something else.
Findings lintNames(const Config& config);

}  // namespace quillory::pack
