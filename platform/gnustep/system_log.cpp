// The system log as NSLog writes it here: to standard error, with the time, the program, its
// process and its thread. NSLog itself takes 2 ms for its first line, in which it reads the user's
// defaults, languages and time zone; a start that shows no window needs none of them.
#include <errno.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/support_cocoa.h"
#include "support/utf8.h"

namespace quillory {
namespace {

// "2026-11-21 09:22:49.539 name[12:34] "
std::string prefix() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  char date[64];
  strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
  char rest[64];
  std::snprintf(rest, sizeof rest, "[%d:%d] ", static_cast<int>(getpid()),
                static_cast<int>(gettid()));
  char millis[8];
  std::snprintf(millis, sizeof millis, ".%03d ", static_cast<int>(now.tv_nsec / 1'000'000));
  return std::string(date) + millis + program_invocation_short_name + rest;
}

// Each byte as the character of that number in Latin-1.
std::string fromLatin1(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text.push_back(byte);
    } else {
      text.push_back(static_cast<char>(0xC0 | code >> 6));
      text.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
  }
  return text;
}

void writeAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // A log that cannot be written is no reason to fail.
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void logThroughCocoa(const char* message) {
  std::string line = prefix() + (isUtf8(message) ? message : fromLatin1(message));
  if (line.back() != '\n') line += '\n';
  // A long line is written in parts, between which another thread's must not come.
  static std::mutex oneLine;
  const std::lock_guard lock(oneLine);
  writeAll(line);
}

}  // namespace quillory
