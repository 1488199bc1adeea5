#include "install/installation_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/clock.h"
#include "support/log.h"

namespace quillory {
namespace {

int lockNow(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno; }

int openToLock(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool isHeldByAnother(int error) { return error == EWOULDBLOCK || error == EINTR; }

}  // namespace

LockCalls lockCalls{lockNow};

InstallationLock::Taken InstallationLock::take(const std::string& masterFolder,
                                               const std::function<void()>& whileWaiting) {
  release();
  folder_ = openToLock(masterFolder);
  // Where there is no folder yet, and none can be made, this start will find that out by itself.
  if (folder_ < 0) return Taken::kNot;
  int error = lockCalls.tryToLock(folder_);
  if (error == 0) return Taken::kAtOnce;

  if (isHeldByAnother(error))
    logMessage("[Extractor] Another start is installing. Waiting until it has come to its end\n");
  // Turns are counted, because a clock may be set while they pass.
  for (std::uint64_t waited = 0; isHeldByAnother(error) && waited < kLockPatienceMicros;
       waited += kLockTurnMicros) {
    whileWaiting();
    timeCalls.sleepMicros(kLockTurnMicros);
    error = lockCalls.tryToLock(folder_);
  }
  if (error == 0) {
    logMessage("[Extractor] The other start has come to its end\n");
    return Taken::kAfterWaiting;
  }
  if (isHeldByAnother(error)) {
    logError("[Extractor] The other start is still not at its end. Going on without waiting\n");
  } else {
    logMessage("[Extractor] The installation cannot be locked: %s\n", std::strerror(error));
  }
  release();
  return Taken::kNot;
}

bool InstallationLock::tryToTake(const std::string& masterFolder) {
  release();
  folder_ = openToLock(masterFolder);
  if (folder_ < 0) return false;
  if (lockCalls.tryToLock(folder_) == 0) return true;
  release();
  return false;
}

void InstallationLock::release() {
  if (folder_ < 0) return;
  // Closing alone would leave it to a child that has been forked and is not yet another program.
  flock(folder_, LOCK_UN);
  close(folder_);
  folder_ = -1;
}

}  // namespace quillory
