// Cocoa's side of the platform table, put together from what each floor has of it.
#pragma once
#include "support/platform.h"

namespace quillory {

/// Everything that Cocoa answers; no member is null. For `platformCalls`, at the start of main().
Platform cocoaPlatform();

}  // namespace quillory
