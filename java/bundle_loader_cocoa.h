// JRE bundles by Cocoa. Only in programs that link the platform layer.
#pragma once
#include "support/platform.h"

namespace quillory {

/// What Cocoa answers for Platform::bundles.
BundleCalls cocoaBundles();

}  // namespace quillory
