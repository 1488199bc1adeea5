// The launcher's own code logs to standard output, which belongs to the results of this program.
#pragma once

namespace quillory::pack {

/// Sends standard output to standard error (or nowhere, when `shown` is false) until the end of the
/// scope.
class QuietStdout {
 public:
  explicit QuietStdout(bool shown);
  ~QuietStdout();
  QuietStdout(const QuietStdout&) = delete;
  QuietStdout& operator=(const QuietStdout&) = delete;

 private:
  int saved_;
  void (*savedSystemLog_)(const char*);
};

}  // namespace quillory::pack
