// The program splash_demo, driven by a test, in a bundle and with a home folder of its own.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

class DemoProcess {
 public:
  struct Start {
    std::string display = {};  ///< "" for none
    std::string busAddress = {};
    std::vector<std::string> arguments = {};
    /// CFBundleIdentifier and CFBundleName of the bundle.
    std::string identifier = "io.quillory.tests.Demo";
    std::string bundleName = "Demo";
  };

  explicit DemoProcess(const Start& start);
  ~DemoProcess();
  DemoProcess(const DemoProcess&) = delete;
  DemoProcess& operator=(const DemoProcess&) = delete;

  /// Has one command carried out; what it wrote to standard output. A test failure, and "", when
  /// that does not come to an end.
  std::string command(const std::string& text);
  /// Begins one that does not come to an end.
  void startCommand(const std::string& text);
  /// Several in turn.
  void commands(const std::vector<std::string>& texts);

  /// The system log so far.
  std::string log() const { return process_->err(); }
  pid_t pid() const { return process_->pid(); }
  BackgroundChild& process() { return *process_; }
  /// Lets it come to its end.
  ChildResult finish();
  /// What is left of it after its end: programs that it started, and entries of its home folder.
  std::vector<std::string> leftBehind() const;
  /// Starts it anew, whether it has ended or was killed.
  void restart();

  std::string home() const { return folder_ / "home"; }
  std::string temporary() const { return folder_ / "tmp"; }

 private:
  void begin();
  void endCommands();

  TempDir folder_;
  Start start_;
  std::unique_ptr<BackgroundChild> process_;
  int commands_ = -1;
  std::size_t outputSeen_ = 0;
};

}  // namespace quillory::testing
