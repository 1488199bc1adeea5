// The window that tells why a start has failed.
#pragma once
#include "support/platform.h"

namespace quillory {

/// Cocoa's, where a window server is reached.
FailureCalls cocoaFailure();

}  // namespace quillory
