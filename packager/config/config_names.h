// The names in a configuration: those of folders, of the executable, and the identifier.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// Adds findings about names that an installation could not have, or that stand for something else.
/// The names that follow from others have to be filled in.
void lintNames(const Config& config, Findings& findings);

}  // namespace quillory::pack
