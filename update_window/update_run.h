// A run of quillory-update whose lines are read as they come.
#pragma once
#include <sys/types.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "update_window/update_line.h"

namespace quillory::window {

class UpdateRun {
 public:
  using OnLine = std::function<void(const UpdateLine&)>;

  /// Starts `command` (its path first), hands on its lines, and waits for its end: its exit status,
  /// 128 and the number of a signal that ended it, or 127 when it could not be started. Nothing
  /// when `limitSeconds` (0: none) are over before it has ended: it then goes on by itself.
  std::optional<int> run(const std::vector<std::string>& command, int limitSeconds,
                         const OnLine& onLine);

  /// Asks the program to end, from any thread; also one that is about to be started.
  void cancel();
  bool isCancelled() const;

 private:
  bool begin(const std::vector<std::string>& command, int output);

  mutable std::mutex mutex_;
  pid_t process_ = 0;
  bool isCancelled_ = false;
};

}  // namespace quillory::window
