// Work that the user waits for.
#pragma once
#include "support/platform.h"

namespace quillory {

/// For as long as it lives the system does not slow this process down, nor puts the machine to
/// sleep, whether it shows a window or not. `reason` is for people.
class UserWork {
 public:
  explicit UserWork(const char* reason) : work_(platformCalls.presence.beginWork(reason)) {}
  ~UserWork() { platformCalls.presence.endWork(work_); }
  UserWork(const UserWork&) = delete;
  UserWork& operator=(const UserWork&) = delete;

 private:
  void* const work_;
};

}  // namespace quillory
