#include "formats/hash_ahead.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <vector>

#include "formats/mixed_hash.h"

namespace quillory {
namespace {

constexpr std::size_t kChunkLength = 1 << 16;

bool areOneFile(std::FILE* file, std::FILE* other) {
  struct stat one {
  }, two{};
  return other != nullptr && fstat(fileno(file), &one) == 0 && fstat(fileno(other), &two) == 0 &&
         one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

}  // namespace

HashAhead::HashAhead(const char* path, const BegunDigest& begun) : file_(std::fopen(path, "rb")) {
  mixed_init(&part_.state);
  if (!file_) return;
  if (areOneFile(file_.get(), begun.file.get()) &&
      std::fseek(file_.get(), begun.part.length, SEEK_SET) == 0) {
    part_ = begun.part;
    allowed_ = part_.length;
  }
  try {
    thread_ = std::thread(&HashAhead::run, this);
  } catch (const std::system_error&) {
    // No thread: the digest is made when it is wanted.
  }
}

HashAhead::~HashAhead() { finish(); }

void HashAhead::allow(long length) {
  {
    const std::lock_guard lock(mutex_);
    allowed_ = std::max(allowed_, length);
  }
  changed_.notify_one();
}

const HashedPart& HashAhead::finish() {
  {
    const std::lock_guard lock(mutex_);
    isFinishing_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
  return part_;
}

void HashAhead::run() {
  for (;;) {
    const long length = waitForMore();
    if (length == part_.length || !hashUpTo(length)) return;
  }
}

long HashAhead::waitForMore() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return isFinishing_ || allowed_ > part_.length; });
  return allowed_;
}

bool HashAhead::hashUpTo(long length) {
  std::vector<char> chunk(kChunkLength);
  while (part_.length < length) {
    const std::size_t wanted =
        std::min(chunk.size(), static_cast<std::size_t>(length - part_.length));
    const std::size_t count = std::fread(chunk.data(), 1, wanted, file_.get());
    if (count == 0) return false;
    mixed_process(&part_.state, reinterpret_cast<const unsigned char*>(chunk.data()), count);
    part_.length += static_cast<long>(count);
  }
  return true;
}

}  // namespace quillory
