// What is well formed in a configuration and still would not work on a user's machine.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// What is wrong with a completed configuration: its names, limits, addresses. The files that it
/// names are not looked at.
Findings lintConfig(const Config& config);

}  // namespace quillory::pack
