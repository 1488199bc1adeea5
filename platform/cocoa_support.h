// What Cocoa does for the support library: the system log and the file manager's move.
#pragma once
#include <string>

namespace quillory {

/// Makes logThroughCocoa() the system log of logCalls, and NSFileManager the mover of fileCalls. To
/// be called once, before a second thread starts.
void installCocoaSupport();

/// The message by NSLog, or as a line of the same form where NSLog takes long, for LogCalls. Bytes
/// that are not UTF-8 are shown as Latin-1, so that no message is lost. From any thread.
void logThroughCocoa(const char* message);

/// As FileCalls::moveItem, by NSFileManager. From any thread.
bool moveThroughCocoa(const char* from, const char* to, std::string& error);

}  // namespace quillory
