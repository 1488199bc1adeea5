// Writes a first configuration for the application that is there.
#pragma once
#include <string>

#include "packager/commands/command.h"
#include "packager/content/found_application.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// The application in `folder`: an image of jpackage, what Gradle's application plugin has
/// installed, or jars in it and in the usual folders of build tools below it. Throws PackError when
/// there is none.
FoundApplication findApplication(const std::string& folder);

/// Writes its configuration to `path`, which must not exist, and tells what was chosen and why.
void writeInitialConfig(const std::string& path, Reporter& reporter);

/// "init": writes it and says what comes next.
Command initCommand();

}  // namespace quillory::pack
