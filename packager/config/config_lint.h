// What is well formed in a configuration and still would not work on a user's machine.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// Adds findings about names, limits, addresses; also fills in what follows from the rest
/// (application.executable, application.identifier, application.displayVersion).
void lintConfig(Config& config, Findings& findings);

/// The name of the executable when none is given: the letters and digits of the name.
std::string executableNameFor(const std::string& applicationName);

}  // namespace quillory::pack
