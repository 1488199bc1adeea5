#include "tests/harness/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/owned.h"
#include "tests/harness/own_folder.h"

extern char** environ;

namespace quillory::testing {
namespace {

using Clock = std::chrono::steady_clock;

std::string newTemporaryFile() {
  std::string path = (ownFolder() / "child-XXXXXX").string();
  const int file = mkstemp(path.data());
  EXPECT_GE(file, 0) << "cannot create " << path;
  close(file);
  return path;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::vector<std::string> environmentFor(const ChildOptions& options) {
  std::vector<std::string> result;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::string name = text.substr(0, text.find('='));
    const bool isUnset = std::count(options.unset.begin(), options.unset.end(), name) > 0;
    if (!isUnset && options.environment.count(name) == 0) result.push_back(text);
  }
  for (const auto& [name, value] : options.environment) result.push_back(name + "=" + value);
  return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

// Whoever started the tests may have had signals ignored, such as a shell that runs them in the
// background, and so may what they test.
void takeEverySignal() {
  for (int signal = 1; signal < NSIG; ++signal) ::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void redirect(const std::string& path, int descriptor) {
  const int file = open(path.c_str(), O_WRONLY | O_APPEND);
  if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
  close(file);
}

}  // namespace

BackgroundChild::BackgroundChild(const std::vector<std::string>& command,
                                 const ChildOptions& options)
    : deadline_(Clock::now() + options.limit),
      outPath_(newTemporaryFile()),
      errPath_(newTemporaryFile()) {
  const OwnedFile input(std::tmpfile());
  std::fwrite(options.input.data(), 1, options.input.size(), input.get());
  std::rewind(input.get());
  std::vector<std::string> arguments = command;
  std::vector<std::string> environment = environmentFor(options);
  const std::vector<char*> argv = pointersTo(arguments);
  const std::vector<char*> envp = pointersTo(environment);
  pid_ = fork();
  EXPECT_GE(pid_, 0) << "cannot fork";
  if (pid_ == 0) {
    setpgid(0, 0);
    takeEverySignal();
    if (dup2(fileno(input.get()), STDIN_FILENO) < 0) _exit(126);
    redirect(outPath_, STDOUT_FILENO);
    redirect(errPath_, STDERR_FILENO);
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) _exit(126);
    execvpe(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  setpgid(pid_, pid_);  // In both processes: whoever comes first. It fails when the child has run.
}

BackgroundChild::~BackgroundChild() {
  if (!poll(WNOHANG)) {
    kill(-pid_, SIGKILL);
    poll(0);
  }
  unlink(outPath_.c_str());
  unlink(errPath_.c_str());
}

bool BackgroundChild::poll(int options) {
  if (!ended_) ended_ = waitpid(pid_, &status_, options) == pid_;
  return ended_;
}

void BackgroundChild::sendSignal(int signal) const { kill(pid_, signal); }

std::string BackgroundChild::out() const { return contentOf(outPath_); }
std::string BackgroundChild::err() const { return contentOf(errPath_); }

bool BackgroundChild::waitForOutput(const std::string& text, std::chrono::seconds limit) {
  const Clock::time_point end = std::min(Clock::now() + limit, deadline_);
  const auto isThere = [&] {
    return out().find(text) != std::string::npos || err().find(text) != std::string::npos;
  };
  while (!isThere()) {
    if (poll(WNOHANG) || Clock::now() > end) return isThere();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

ChildResult BackgroundChild::finish() {
  ChildResult result;
  while (!poll(WNOHANG)) {
    if (Clock::now() > deadline_) {
      result.timedOut = true;
      kill(-pid_, SIGKILL);
      poll(0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (WIFEXITED(status_)) result.exitStatus = WEXITSTATUS(status_);
  if (WIFSIGNALED(status_)) result.signal = WTERMSIG(status_);
  result.out = out();
  result.err = err();
  return result;
}

ChildResult runChild(const std::vector<std::string>& command, const ChildOptions& options) {
  return BackgroundChild(command, options).finish();
}

}  // namespace quillory::testing
