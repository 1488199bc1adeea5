// A small window for people while a start waits for minutes, with a way out of it.
#pragma once
#include "support/platform.h"

namespace quillory {

/// Cocoa's, where a window server is reached. "Quit" ends the process with kExitFailure: the
/// application has not been started.
NoticeCalls cocoaNotice();

}  // namespace quillory
