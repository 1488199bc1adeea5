// One start at a time changes an installation. The lock is flock(2) on the master folder itself, so
// that nothing new lies in it, and the system lets it go when its holder ends, however it ends.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

namespace quillory {

/// How long a start waits for another: longer than a runtime of some 200 MB takes on a line of
/// 4 Mbit/s, and short enough for a person who comes back to the machine. What hangs longer, a
/// stopped process say, must not keep an application from starting for ever.
inline constexpr std::uint64_t kLockPatienceMicros = 10ull * 60 * 1000 * 1000;
/// How often it looks meanwhile.
inline constexpr std::uint64_t kLockTurnMicros = 50 * 1000;

struct LockCalls {
  /// flock(2) for this process alone, without waiting: 0, or an error number.
  int (*tryToLock)(int descriptor);
};
/// Assigned to by tests only.
extern LockCalls lockCalls;

class InstallationLock {
 public:
  enum class Taken {
    kAtOnce,
    kAfterWaiting,
    kNot,  ///< nobody else may be waited for: the start goes on without it
  };

  InstallationLock() = default;
  ~InstallationLock() { release(); }
  InstallationLock(const InstallationLock&) = delete;
  InstallationLock& operator=(const InstallationLock&) = delete;

  /// Waits until no other start has it, for kLockPatienceMicros at most, and calls `whileWaiting`
  /// at every turn. The log tells that it waits, and what came of it. Not taken: without a folder
  /// that can be opened, on a file system without locks, or when the time is up.
  Taken take(const std::string& masterFolder, const std::function<void()>& whileWaiting);

  /// Without waiting and without a log line; whether it is taken.
  bool tryToTake(const std::string& masterFolder);

  /// Lets the others go on. No child has it: it is not handed over to programs.
  void release();

 private:
  int folder_ = -1;
};

}  // namespace quillory
