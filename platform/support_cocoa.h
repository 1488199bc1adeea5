// What Cocoa answers for the support library: the system log, the file manager's move, and which
// thread is the main one.
#pragma once
#include <string>

namespace quillory {

/// For Platform::systemLog: the message by NSLog, or as a line of the same form where NSLog takes
/// long. Bytes that are not UTF-8 are shown as Latin-1, so that no message is lost. Any thread.
void logThroughCocoa(const char* message);

/// For Platform::moveItem: by NSFileManager. Any thread.
bool moveThroughCocoa(const char* from, const char* to, std::string& error);

/// For Platform::isMainThread: the thread that Cocoa takes for it.
bool isMainThreadOfCocoa();

}  // namespace quillory
