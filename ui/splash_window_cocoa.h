// The splash window on a screen.
#pragma once

namespace quillory {

/// From now on Cocoa carries out what the splash asks for, where a window server is reached. The
/// window itself is made when it is first needed.
void installCocoaSplash();

}  // namespace quillory
