// Keeps the main run loop from waiting while an event lies in the application's queue.
#pragma once

namespace quillory::platform {

/// From now on no turn of the current run loop waits a second time: it ends before that, so that
/// whoever runs the loop looks at the queue. Once, on the main thread, before the loop that handles
/// the application's events; without a free descriptor the loop stays as it was.
///
/// A turn of GNUstep's ends when a descriptor becomes ready. Events of the window server that are
/// in the connection's buffer by then, because an earlier call read them while it waited for an
/// answer of its own, are moved to the application's queue as well, but the turn goes on to wait: a
/// window shown again stayed without its picture until something else happened.
void endTurnsBeforeSecondWait();

}  // namespace quillory::platform
