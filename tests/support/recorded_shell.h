// The shell commands that would have been run.
#pragma once
#include <string>
#include <vector>

#include "support/process.h"
#include "tests/harness/scoped_replace.h"

namespace quillory::testing {

/// Takes the place of the shell: keeps the commands, and returns `status` for each.
class RecordedShell {
 public:
  explicit RecordedShell(int status = 0) : replaced_(processCalls.runShell, record) {
    commands_.clear();
    status_ = status;
  }

  const std::vector<std::string>& commands() const { return commands_; }

 private:
  static int record(const char* command) {
    commands_.emplace_back(command);
    return status_;
  }

  static inline std::vector<std::string> commands_;
  static inline int status_ = 0;
  ScopedReplace<decltype(processCalls.runShell)> replaced_;
};

}  // namespace quillory::testing
