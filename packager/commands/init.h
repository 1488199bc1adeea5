// Writes a first configuration for the jars that are there.
#pragma once
#include <string>

#include "packager/commands/command.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// A commented configuration for the jars found in `folder` and in the usual folders of build tools
/// below it. Throws PackError when there are none.
std::string initialConfig(const std::string& folder);

/// Writes it to `path`, which must not exist.
void writeInitialConfig(const std::string& path, Reporter& reporter);

/// "init": writes it and says what comes next.
Command initCommand();

}  // namespace quillory::pack
