#include <cstdlib>

#include "java/cocoa_embedding.h"

namespace quillory {

// +[ApplicationDelegate sharedDelegate] of OpenJDK (ApplicationDelegate.m) installs AWT's delegate
// where NSApp is an NSApplicationAWT, which AWT makes when there is no application object yet, or
// where
//
//     [NSApp isMemberOfClass:[NSApplication class]] && getenv("AWT_OVERRIDE_NSDELEGATE") != NULL
//
// The second half came with JDK 22, and into later updates of 21, 17 and 11; before, an NSApp of
// exactly that class was enough. The value does not matter. Without the delegate no handler is ever
// called, and Quit ends the process on the spot.
void letToolkitTakeOver() { setenv("AWT_OVERRIDE_NSDELEGATE", "1", 1); }

}  // namespace quillory
