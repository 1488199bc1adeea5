// One update of an installation at a time. The lock is flock(2) on a file of its own, so that a
// start of the application, which takes the lock of the installation, waits for nobody who
// downloads.
#pragma once
#include <string>

namespace quillory::update {

class UpdateLock {
 public:
  UpdateLock() = default;
  ~UpdateLock();
  UpdateLock(const UpdateLock&) = delete;
  UpdateLock& operator=(const UpdateLock&) = delete;

  enum class Taken {
    kYes,
    kBusy,  ///< another process has it
    kNot,   ///< the file cannot be made or locked: errno says why
  };
  /// Without waiting. `updatesFolder` is there.
  Taken take(const std::string& updatesFolder);

 private:
  int file_ = -1;
};

}  // namespace quillory::update
