// The log file as a place that one thread may close while another is writing to it.
#pragma once
#include <atomic>
#include <cstdio>
#include <string_view>

namespace quillory {

/// Holds the stream of the log file, or none. The start-up thread closes the file just before Java
/// starts, and the main thread may be logging a URL request at that moment; there is no lock, but
/// the last one to use the stream closes it.
class LogFile {
 public:
  /// Replaces the stream; the one before is left open, and belongs to whoever gave it.
  void set(std::FILE* file) { current_ = file; }

  /// Writes and flushes, when there is a file. Errors are ignored: a log has nowhere to tell them.
  void write(std::string_view line);

  /// Closes the stream: at once, or as soon as the writes under way are done. Without a stream it
  /// does nothing. For one thread only.
  void close();

 private:
  // use_: kRetired while a stream waits to be closed, plus kWriter for each write under way.
  static constexpr int kRetired = 1;
  static constexpr int kWriter = 2;
  void closeIfUnused();

  std::atomic<std::FILE*> current_{nullptr};
  std::FILE* retired_ = nullptr;
  std::atomic<int> use_{0};
};

}  // namespace quillory
