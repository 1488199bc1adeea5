// Property lists of bundles, as XML.
#pragma once
#include <string>

#include "packager/config/config.h"

namespace quillory::pack {

/// Contents/Info.plist of the application's bundle.
std::string applicationInfoPlist(const ApplicationConfig& application, const std::string& iconFile);

/// Whether a text is what applicationInfoPlist() makes of some configuration, to the byte.
bool isApplicationInfoPlist(const std::string& text);

/// Contents/Info.plist of a runtime's bundle; `executable` may be empty.
std::string runtimeInfoPlist(const std::string& name, const std::string& version,
                             const std::string& executable);

}  // namespace quillory::pack
