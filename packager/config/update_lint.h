// What of [update] and its neighbours would leave installations without their updates.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// What is wrong with the settings that installations update themselves by, and with what a release
/// list says beside its content. The update URL itself is left to lintConfig().
Findings lintUpdates(const Config& config);

}  // namespace quillory::pack
