#include "support/log.h"

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "support/clock.h"
#include "support/log_file.h"
#include "support/paths.h"
#include "support/platform.h"

namespace quillory {
namespace {

LogFile logFile;

// When the previous message was finished, in milliseconds; 0 before the first. Written and read by
// the start-up thread and the main thread; atomic so that a stale value is the worst that happens.
std::atomic<std::uint64_t> lastTimestamp{0};

// How many LogPause objects this thread has.
thread_local int pauses = 0;

// A line of 43 or 48 marks. Made anew each time: the main thread may be logging while the process
// ends, when a global string would be gone.
std::string lineOf(char mark, std::size_t length) { return std::string(length, mark) + '\n'; }

void writeToStandardOutput(const char* line, std::size_t length) {
  std::fwrite(line, 1, length, stdout);
}

std::string formatText(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

// The clock may have been set back meanwhile: the difference wraps then, and the huge number in the
// log shows it.
std::string elapsedPrefix() {
  const std::uint64_t now = timeCalls.nowMillis();
  const std::uint64_t last = lastTimestamp.load(std::memory_order_relaxed);
  const std::uint64_t elapsed = last == 0 ? 0 : now - last;
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "+%-8llu ", static_cast<unsigned long long>(elapsed));
  return prefix;
}

void flushStandardStreams() {
  std::fflush(stdout);
  std::fflush(stderr);
}

void writeMessage(const std::string& message) {
  if (pauses > 0) return;
  const std::string line = elapsedPrefix() + message;
  logFile.write(line);
  logCalls.show(line.data(), line.size());
  flushStandardStreams();
  // Read again, so that the next prefix measures the gap since this line was finished.
  lastTimestamp.store(timeCalls.nowMillis(), std::memory_order_relaxed);
  platformCalls.systemLog(message.c_str());
}

}  // namespace

LogCalls logCalls{writeToStandardOutput};

void logMessage(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatText(format, arguments);
  va_end(arguments);
  writeMessage(message);
}

void logError(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatText(format, arguments);
  va_end(arguments);
  writeMessage(lineOf('*', 43));
  writeMessage(message);
  writeMessage(lineOf('*', 43));
}

void logToSystem(const char* format, ...) {
  if (pauses > 0) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatText(format, arguments);
  va_end(arguments);
  platformCalls.systemLog(message.c_str());
}

void logStartSection(const char* name) {
  const std::string line = lineOf('+', 48);
  writeMessage(line);
  logMessage("+++ Start: %s\n", name);
  writeMessage(line);
}

void logEndSection(const char* name) {
  const std::string line = lineOf('-', 48);
  writeMessage(line);
  logMessage("--- End: %s\n", name);
  writeMessage(line);
}

LogPause::LogPause() { ++pauses; }

LogPause::~LogPause() { --pauses; }

void setFileToLogTo(std::FILE* file) { logFile.set(file); }

void closeLoggedFile() {
  logMessage("[Utils] Closing logging file.\n");
  logFile.close();
}

void printWorkingDir() {
  logMessage("[Extractor] Working dir is '%s'\n", currentDirectory().c_str());
}

}  // namespace quillory
