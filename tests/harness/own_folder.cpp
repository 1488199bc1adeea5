#include "tests/harness/own_folder.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

constexpr char kGuardian[] = QUILLORY_SOURCE_DIR "/tests/harness/guardian.sh";

// In a child of a process that may have threads: nothing here but system calls.
[[noreturn]] void becomeGuardian(int input, const char* folder) {
  setsid();
  // Its parent ends at once, so that it is nobody's child.
  if (const pid_t guardian = fork(); guardian != 0) _exit(guardian < 0 ? 1 : 0);
  const int nowhere = open("/dev/null", O_RDWR);
  dup2(input, STDIN_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  constexpr int kMostDescriptors = 1024;
  for (int other = STDERR_FILENO + 1; other < kMostDescriptors; ++other) close(other);
  execl("/bin/sh", "sh", kGuardian, folder, static_cast<char*>(nullptr));
  _exit(1);
}

// The end of the pipe tells the guardian that this process and whatever it forked have ended.
void startGuardian(const fs::path& folder) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe for the guardian");
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  const pid_t child = fork();
  if (child == 0) becomeGuardian(ends[0], folder.c_str());
  close(ends[0]);
  int status = 1;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error("no guardian for " + folder.string());
}

class FolderOfThisRun {
 public:
  FolderOfThisRun() {
    std::string name = (fs::temp_directory_path() / "quillory-tests-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + name);
    path_ = name;
    chmod(name.c_str(), 01777);  // Some tests are another user for a while.
    startGuardian(path_);
    setenv("TMPDIR", name.c_str(), 1);
    setenv("QUILLORY_TEST_FOLDER", name.c_str(), 1);
    setenv("QUILLORY_PACK_CACHE", "", 1);  // each bundle is made, and not taken from a user's cache
  }
  ~FolderOfThisRun() {
    if (getpid() == owner_) removeFolder(path_);  // Not in a copy that was forked.
  }
  FolderOfThisRun(const FolderOfThisRun&) = delete;
  FolderOfThisRun& operator=(const FolderOfThisRun&) = delete;

  const fs::path& path() const { return path_; }

 private:
  const pid_t owner_ = getpid();
  fs::path path_;
};

}  // namespace

const fs::path& ownFolder() {
  static const FolderOfThisRun folder;
  return folder.path();
}

void removeFolder(const fs::path& folder) {
  std::error_code ignored;
  for (fs::recursive_directory_iterator entry(folder, ignored), end; entry != end;
       entry.increment(ignored)) {
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
  }
  fs::remove_all(folder, ignored);
}

}  // namespace quillory::testing
