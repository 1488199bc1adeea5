// Downloads of version files and archives from the application's update URL.
//
// A file at the destination is a whole one: bytes arrive in a file beside it, which gets its name
// at the end of a complete transfer. What an earlier start left at the destination is removed
// before a transfer begins, so that a failed one leaves nothing there.
#pragma once
#include <string>
#include <string_view>

#include "formats/version_file_format.h"
#include "support/platform.h"

namespace quillory {

/// Downloads to `destPath` by the transport of support/platform.h and waits for the end: as long as
/// bytes come, and 60 seconds after the last one. Always 1: the caller judges success by the file,
/// which exists afterwards only when the transfer was complete. Below kInvalidUpdateURL
/// (update_url.h) there is nothing: that fails at once.
int downloadFile(const char* url, const char* destPath);
/// The same, but a download that goes beyond the limits ends as one that failed.
int downloadFile(const char* url, const char* destPath, const DownloadLimits& limits);

/// Those of a version file.
inline constexpr DownloadLimits kVersionFileLimits = {kMaxVersionFileBytes, kMaxVersionFileSeconds};

/// The current time in milliseconds as decimal text, in a new block of 101 bytes; free() it.
char* allocTimeMillisString();

/// Fetches <updateURL>Quillory-<name>-version.txt?time=<millis> into `destFolder`, within
/// kVersionFileLimits. Whether it came is judged by the file. No separator is put between the URL
/// and the name.
void downloadVersionFile(const char* destFolder, const char* updateURL, const char* name);

/// For the transport: a line in the log with the reason for which nothing came from `url`. The
/// lines of the transport itself go to the system log only.
void logDownloadFailure(std::string_view url, std::string_view reason);

/// For the transport: whether a redirect may be followed. It leads to http or https, and never from
/// https to http, where whoever stands on the way can answer in the server's place.
bool mayRedirect(std::string_view from, std::string_view to);

/// For the transport: where it writes until the transfer is complete. Differs from process to
/// process, so that two launchers that fetch the same file do not mix their bytes.
std::string partialDownloadPath(const std::string& destPath);

/// For the transport, after a complete transfer: gives the partial file its final name. With an
/// `httpStatus` other than 200 to 299 (0 stands for a transfer without one) what came is a page
/// that explains an error: it is removed instead. False when nothing is at `destPath` now.
bool keepDownload(const std::string& destPath, int httpStatus);

/// For the transport, after a failed transfer: removes what there is of the partial file.
void discardDownload(const std::string& destPath);

}  // namespace quillory
