// What of [update] and its neighbours would leave installations without their updates.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// A release list names no more keys than this.
inline constexpr std::size_t kMostNextKeys = 4;
inline constexpr std::size_t kMostMirrors = 8;

/// What is wrong with the settings that installations update themselves by, and with what a release
/// list says beside its content. The update URL itself is left to lintConfig().
Findings lintUpdates(const Config& config);

}  // namespace quillory::pack
