// The main thread's events where there is no application object to run them.
#pragma once

namespace quillory::platform {

/// Gives the current run loop something to wait for. One in which nothing can ever happen returns
/// at once, however long it is asked to wait. A port would do, too, but leaves a folder behind on
/// GNUstep.
void keepLoopWaiting();

/// Waits in the current run loop for what happens next, and handles it. For a thread with
/// keepLoopWaiting() behind it.
void runLoopOnce();

}  // namespace quillory::platform
