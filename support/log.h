// The process-wide log. A message goes to the log file (once there is one), to standard output and
// to the system log; callers write their own tag and line end ("[Extractor] Working dir ...\n").
// A message may have any length. No call reports a failure. No lock is taken but that of a sink, so
// that two threads' lines may stand in another order in each of them.
#pragma once
#include <cstddef>
#include <cstdio>

namespace quillory {

struct LogCalls {
  /// Where a line is shown, prefix included: standard output. quillory-pack, whose results stand
  /// there, has another place.
  void (*show)(const char* line, std::size_t length);
};
extern LogCalls logCalls;

/// One message to all sinks. In the file and on standard output a prefix "+%-8llu " tells the
/// milliseconds since the previous message was finished. All sinks are flushed, so that a crash
/// loses no line.
void logMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The same, framed by two lines of 43 stars.
void logError(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// A line for the system log only.
void logToSystem(const char* format, ...) __attribute__((format(printf, 1, 2)));

void logStartSection(const char* name);  ///< "+++ Start: <name>" between two lines of 48 '+'
void logEndSection(const char* name);    ///< "--- End: <name>" between two lines of 48 '-'

/// While one lives, what the thread that made it logs is dropped: for looking at something a second
/// time, of which the log has told already.
class LogPause {
 public:
  LogPause();
  ~LogPause();
  LogPause(const LogPause&) = delete;
  LogPause& operator=(const LogPause&) = delete;
};

/// Makes `file` (may be null) the file sink and takes ownership; closes nothing.
void setFileToLogTo(std::FILE* file);

/// Says so in the log, and closes the log file if there is one; later messages go to the other
/// sinks. For the start-up thread only.
void closeLoggedFile();

/// Logs the current directory.
void printWorkingDir();

}  // namespace quillory
