// The digest of an archive's signed part, begun while its entries are still being extracted, or
// before (hash_while_written.h). Making it takes longer than the extraction, and comes for nothing
// where there is a second processor.
#pragma once
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

#include "formats/tomcrypt.h"
#include "support/owned.h"

namespace quillory {

/// The state of the "mixed" hash after the first `length` bytes of a file.
struct HashedPart {
  hash_state state;
  long length = 0;
};

/// The digest of a file, begun before the file got its name. While this lives, no other file can be
/// taken for that one.
struct BegunDigest {
  HashedPart part{};
  OwnedFile file{};  ///< what was hashed; null for nothing
};

class HashAhead {
 public:
  /// Hashes on a thread of its own, behind what has `begun`, if that is of the file at `path`.
  /// Where there can be none, or the file cannot be read, the part that finish() gives is shorter,
  /// down to nothing.
  explicit HashAhead(const char* path, const BegunDigest& begun = {});
  ~HashAhead();
  HashAhead(const HashAhead&) = delete;
  HashAhead& operator=(const HashAhead&) = delete;

  /// The file holds so many bytes for good, and they are to be hashed. Does not wait.
  void allow(long length);

  /// Waits until all that was allowed has been hashed. Nothing may be allowed after it.
  const HashedPart& finish();

 private:
  void run();
  // The number of bytes that are allowed, once there are more than have been hashed or no more are
  // to come.
  long waitForMore();
  bool hashUpTo(long length);

  OwnedFile file_;
  HashedPart part_;
  std::mutex mutex_;
  std::condition_variable changed_;
  long allowed_ = 0;
  bool isFinishing_ = false;
  std::thread thread_;
};

}  // namespace quillory
