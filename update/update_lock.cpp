#include "update/update_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "support/paths.h"
#include "update/update_folder.h"

namespace quillory::update {

UpdateLock::~UpdateLock() {
  if (file_ >= 0) close(file_);
}

UpdateLock::Taken UpdateLock::take(const std::string& updatesFolder) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  file_ = open(joinPath(updatesFolder, kLockFile).c_str(), kFlags, 0644);
  if (file_ < 0) return Taken::kNot;
  int error = 0;
  do {
    error = flock(file_, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
  } while (error == EINTR);
  if (error == 0) return Taken::kYes;
  close(file_);
  file_ = -1;
  errno = error;
  return error == EWOULDBLOCK ? Taken::kBusy : Taken::kNot;
}

}  // namespace quillory::update
