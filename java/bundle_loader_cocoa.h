// JRE bundles by Cocoa, and by their folders where it is GNUstep, which knows none. Only in
// programs that link the platform layer.
#pragma once
#include "support/platform.h"

namespace quillory {

/// For Platform::bundles.
BundleCalls cocoaBundles();

}  // namespace quillory
