// The splash window on a screen.
#pragma once
#include "support/platform.h"

namespace quillory {

/// Cocoa carries out what the splash asks for, where a window server is reached. The window itself
/// is made when it is first needed.
splash::WindowCalls cocoaSplashWindow();

}  // namespace quillory
