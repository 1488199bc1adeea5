#include "packager/bytes/work_folder.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "packager/bytes/abandoned.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t interruption = 0;

extern "C" void noticeSignal(int number) {
  interruption = number;
  // Whoever asks twice does not want to wait for the cleaning.
  std::signal(number, SIG_DFL);
}

}  // namespace

WorkFolder::WorkFolder(const std::string& parent) {
  std::error_code error;
  fs::create_directories(parent, error);
  if (error) {
    throw PackError("cannot be created: " + error.message(), "", {parent, 0});
  }
  removeAbandoned(parent);
  // Again where another run's cleaning was faster than our lock.
  while (lock_ < 0) {
    path_ = parent + "/.unfinished-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
      throwFileError(parent, "no folder can be made in it", errno);
    }
    lock_ = lockUnfinished(path_);
    if (lock_ < 0 && fs::exists(path_, error)) {
      break;  // a file system without locks
    }
  }
}

WorkFolder::~WorkFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  if (lock_ >= 0) {
    close(lock_);
  }
}

void noticeInterruptions() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(number, noticeSignal) == SIG_IGN) {
      std::signal(number, SIG_IGN);
    }
  }
}

int interruptingSignal() { return interruption; }

void stopIfInterrupted() {
  if (interruption != 0) {
    throw PackError("interrupted");
  }
}

}  // namespace quillory::pack
