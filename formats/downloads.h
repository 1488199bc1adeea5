// Downloads of version files and archives from the application's update URL.
//
// A file at the destination is a whole one: bytes arrive in a file beside it, which gets its name
// at the end of a complete transfer. What an earlier start left at the destination is removed
// before a transfer begins, so that a failed one leaves nothing there.
#pragma once
#include <string>

namespace quillory {

/// Downloads to `destPath` by the transport of support/platform.h and waits for the end: as long as
/// bytes come, and 60 seconds after the last one. Always 1: the caller judges success by the file,
/// which exists afterwards only when the transfer was complete. Below kInvalidUpdateURL
/// (update_url.h) there is nothing: that fails at once.
int downloadFile(const char* url, const char* destPath);

/// The current time in milliseconds as decimal text, in a new block of 101 bytes; free() it.
char* allocTimeMillisString();

/// Fetches <updateURL>Quillory-<name>-version.txt?time=<millis> into `destFolder`. Whether it came
/// is judged by the file. No separator is put between the URL and the name.
void downloadVersionFile(const char* destFolder, const char* updateURL, const char* name);

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
