// The launcher's own code logs to standard output, which belongs to the results of this program.
#pragma once
#include <string>

namespace quillory::pack {

/// Sends standard output to standard error (or nowhere, when `shown` is false) until the end of the
/// scope.
class QuietStdout {
 public:
  explicit QuietStdout(bool shown);
  ~QuietStdout();
  QuietStdout(const QuietStdout&) = delete;
  QuietStdout& operator=(const QuietStdout&) = delete;

  /// Puts standard output back before the end of the scope.
  void end();
  /// What was logged last during such a scope, without its tag and frame.
  static std::string lastMessage();

 private:
  int saved_ = -1;
  void (*savedSystemLog_)(const char*);
};

}  // namespace quillory::pack
