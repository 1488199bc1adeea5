// What the user is told when a start ends because something is wrong: the parameter "error_dialog".
#pragma once
#include <string>

namespace quillory {

/// What the window of a failure says.
struct FailureReport {
  std::string sentence;  ///< what has happened
  std::string cause;     ///< in the words of the JVM, the updater or the log; may be ""
};

/// What there is to be told of a process that ends now: nothing ("" for a sentence) of one that
/// ends in order, or by its application. `logLines` are the last lines of the log.
FailureReport reportNow(const std::string& appName, const std::string& logLines);

/// Tells the user of an end of this process that is a failure, before it ends, in a window
/// (Platform::failure). For starts with somebody to look at them. A second call counts for
/// nothing. The exit status and what was written stay as they are.
void reportFailuresOf(const std::string& appName);

}  // namespace quillory
