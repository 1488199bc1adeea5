// The main loop's work as part of Foundation's run loop.
#pragma once

namespace quillory::platform {

/// From now on the current run loop does what mainLoop() has to do. The first call counts, on the
/// main thread.
void joinMainLoop();

}  // namespace quillory::platform
