// Downloads of version files and archives from the application's update URL.
#pragma once

namespace quillory {

/// The transport: Cocoa's URL download, or null where there is none (then every download fails).
struct DownloadCalls {
  int (*downloadFile)(const char* url, const char* destPath);
};
extern DownloadCalls downloadCalls;

/// Downloads to `destPath` and waits for the end. Always 1: the caller judges success by the file,
/// which exists afterwards only when the transfer was complete.
int downloadFile(const char* url, const char* destPath);

/// The update URL that packagers write to switch updating off.
inline constexpr char kInvalidUpdateURL[] = "http://no.invalid/";

/// Whether `url` begins with the 18 characters of kInvalidUpdateURL; false for null.
bool isInvalidUpdateURL(const char* url);

/// The current time in milliseconds as decimal text, in a new block of 101 bytes; free() it.
char* allocTimeMillisString();

/// Fetches <updateURL>Quillory-<name>-version.txt?time=<millis> into `destFolder`. Whether it came
/// is judged by the file.
void downloadVersionFile(const char* destFolder, const char* updateURL, const char* name);

}  // namespace quillory
