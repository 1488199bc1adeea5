// The transport of downloads.h: Cocoa's URL download, with the calling thread's run loop turning
// until the transfer ends.
#pragma once
#include "support/platform.h"

namespace quillory {

/// Silence of this length ends a transfer.
inline constexpr double kDownloadTimeoutSeconds = 60;

/// For Platform::downloadFile.
int downloadThroughCocoa(const char* url, const char* destPath, const DownloadLimits& limits);
int downloadThroughCocoa(const char* url, const char* destPath, const DownloadLimits& limits,
                         double timeoutSeconds);

}  // namespace quillory
