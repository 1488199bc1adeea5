// The digest of an archive, begun while a program still decompresses it. That program takes most of
// the time of an installation and one processor; the digest, which can only be made from the first
// byte to the last, would come behind it and keep the other one waiting.
#pragma once
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "formats/hash_ahead.h"
#include "support/owned.h"

namespace quillory {

class HashWhileWritten {
 public:
  /// Hashes, on a thread of its own, what an OutputFile of another process writes beside `path`,
  /// to be put there (support/output_file.h). A file that comes there in another way is not hashed:
  /// only an OutputFile is known to grow at its end alone. Nothing else of that kind may be written
  /// to the folder meanwhile.
  explicit HashWhileWritten(const std::string& path);
  ~HashWhileWritten();
  HashWhileWritten(const HashWhileWritten&) = delete;
  HashWhileWritten& operator=(const HashWhileWritten&) = delete;

  /// How much has been hashed so far. Never the last bytes, which may be the signature's block: a
  /// digest that goes too far is of no use.
  long length() const { return length_; }

  /// Ends the hashing where it is: when the program has ended, or before. Once.
  BegunDigest finish();

 private:
  void run();
  // Whether it is over; false after a moment.
  bool waitForTurn();
  bool isFinishing();
  bool findFile();
  // Whether there was something to hash.
  bool hashSome();

  std::string folder_;
  OwnedFile file_;
  HashedPart part_;
  std::atomic<long> length_{0};
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isFinishing_ = false;
  std::thread thread_;
};

}  // namespace quillory
