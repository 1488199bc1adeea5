// What the desktop wants opened, as it comes over the session bus (desktop_bus.h) into the main
// loop. Without Foundation: most starts never get a request.
#pragma once

namespace quillory::platform {

/// From the main loop's next turn on the bundle's name on the bus is ours, and every URL goes to
/// `openUrl` on the main thread; files go to openFile() of support. Once; without a session bus
/// nothing ever comes. Main thread only.
void listenToBus(void (*openUrl)(const char* url));

/// Handles what has come by now; of the first moments of a start also what the desktop has started
/// it for. Main thread only.
void handleWaitingCalls();

}  // namespace quillory::platform
