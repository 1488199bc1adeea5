// A program started by a test: its output, its exit status, and no trace of it afterwards. It has
// every signal as it is by default.
#pragma once
#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace quillory::testing {

struct ChildResult {
  int exitStatus = -1;    ///< -1 when a signal ended it
  int signal = 0;         ///< the signal that ended it, or 0
  bool timedOut = false;  ///< it was killed, with its process group, because it took too long
  std::string out;
  std::string err;
};

struct ChildOptions {
  std::map<std::string, std::string> environment;  ///< added to this process's own
  std::vector<std::string> unset;                  ///< variables that the child does not get
  std::string directory;                           ///< working directory; "" for this one's
  std::string input;                               ///< standard input, which then ends
  std::chrono::seconds limit{60};
};

/// Runs `command` (command[0] is searched for in PATH) to its end.
ChildResult runChild(const std::vector<std::string>& command, const ChildOptions& options = {});

/// A child that runs on while the test does something else.
class BackgroundChild {
 public:
  BackgroundChild(const std::vector<std::string>& command, const ChildOptions& options = {});
  /// Kills what still runs, with its process group.
  ~BackgroundChild();
  BackgroundChild(const BackgroundChild&) = delete;
  BackgroundChild& operator=(const BackgroundChild&) = delete;

  pid_t pid() const { return pid_; }
  void sendSignal(int signal) const;
  /// What it has written so far.
  std::string out() const;
  std::string err() const;
  /// Waits until its standard output or error holds `text`; false after `limit` or at its end.
  bool waitForOutput(const std::string& text,
                     std::chrono::seconds limit = std::chrono::seconds{20});
  /// Waits for its end.
  ChildResult finish();

 private:
  bool poll(int options);

  pid_t pid_ = -1;
  int status_ = 0;
  bool ended_ = false;
  std::chrono::steady_clock::time_point deadline_;
  std::string outPath_;
  std::string errPath_;
};

}  // namespace quillory::testing
