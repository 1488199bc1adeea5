#include "packager/bytes/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{50};

}  // namespace

FolderLock::FolderLock(const std::string& folder, const std::function<void()>& onWait) {
  // The folder itself, so that no file of ours lies among what is served.
  folder_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder_ < 0 && errno == ENOENT) {
    return;
  }
  if (folder_ < 0) {
    throw PackError("cannot open the folder " + folder + ": " +
                    std::system_category().message(errno));
  }
  bool isWaiting = false;
  while (flock(folder_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    if (!isWaiting) {
      onWait();
    }
    isWaiting = true;
    std::this_thread::sleep_for(kBetweenLooks);
    stopIfInterrupted();
  }
}

FolderLock::~FolderLock() {
  if (folder_ >= 0) {
    close(folder_);
  }
}

}  // namespace quillory::pack
