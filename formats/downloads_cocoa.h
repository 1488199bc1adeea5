// The transport of downloads.h: Cocoa's URL download, with the calling thread's run loop turning
// until the transfer ends.
#pragma once

namespace quillory {

/// From now on downloadFile() fetches.
void installCocoaDownloads();

/// Silence of this length ends a transfer. Assigned to by tests only.
extern double downloadTimeoutSeconds;

}  // namespace quillory
