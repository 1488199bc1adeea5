// What follows from the rest of a configuration where nobody wrote it.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// The same configuration with application.executable, .display-version and .identifier filled in
/// from its name and version, with the URL that stands for no updates when they are off, and with
/// runtime.jdk and .jmods as paths from its folder. application.jars-stored follows from whether
/// installations look for updates: what others pack has always been packed as it came. `filledIn`
/// names what people may want to know of. Nothing is judged.
Config completed(Config config);

}  // namespace quillory::pack
