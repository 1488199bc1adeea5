// What the application plugin of Gradle installs ("gradle installDist"): jars in lib/, a start
// script in bin/ that knows the class path, the main class and the options of the JVM.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/content/found_application.h"

namespace quillory::pack {

/// What such a script says; where it cannot be understood, nothing.
struct StartScript {
  std::vector<std::string> classPath;  ///< from the folder above that of the script
  std::string mainClass;
  std::vector<std::string> jvmOptions;
};
StartScript readStartScript(const std::string& text);

/// The installation in `folder`/build/install, the first by name where there are several; none
/// where there is none that has jars.
std::optional<FoundApplication> findGradleApplication(const std::string& folder);

}  // namespace quillory::pack
