#include "formats/hash_while_written.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "formats/mixed_hash.h"
#include "support/folder_listing.h"
#include "support/output_file.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

// Half a megabyte of what decompresses in this time: a millisecond's work for the digest.
constexpr auto kTurn = std::chrono::milliseconds(5);
// Longer than every block of a signature: its records are bounded (archive_format.h).
constexpr long kKeptBack = 16 * 1024;
constexpr long kPiece = 64 * 1024;

}  // namespace

HashWhileWritten::HashWhileWritten(const std::string& path)
    : folder_(std::filesystem::path(path).parent_path().string()) {
  mixed_init(&part_.state);
  try {
    thread_ = std::thread(&HashWhileWritten::run, this);
  } catch (const std::system_error&) {
    // No thread: the digest is made when it is wanted.
  }
}

HashWhileWritten::~HashWhileWritten() { finish(); }

BegunDigest HashWhileWritten::finish() {
  {
    const std::lock_guard lock(mutex_);
    isFinishing_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
  return {part_, std::move(file_)};
}

void HashWhileWritten::run() {
  while (!findFile())
    if (waitForTurn()) return;
  for (;;) {
    const bool isOver = hashSome() ? isFinishing() : waitForTurn();
    if (isOver) return;
  }
}

bool HashWhileWritten::waitForTurn() {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kTurn, [this] { return isFinishing_; });
}

bool HashWhileWritten::isFinishing() {
  const std::lock_guard lock(mutex_);
  return isFinishing_;
}

bool HashWhileWritten::findFile() {
  for (const std::string& name : namesIn(folder_)) {
    if (!name.starts_with(kUnfinishedPrefix)) continue;
    file_ = openPlainFile(joinPath(folder_, name));
    if (file_) return true;
  }
  return false;
}

bool HashWhileWritten::hashSome() {
  const int descriptor = fileno(file_.get());
  struct stat found {};
  if (fstat(descriptor, &found) != 0) return false;
  const long settled = static_cast<long>(found.st_size) - kKeptBack - part_.length;
  if (settled <= 0) return false;
  std::array<unsigned char, kPiece> piece;
  const ssize_t count =
      readSteadily(descriptor, piece.data(), static_cast<std::size_t>(std::min(settled, kPiece)));
  if (count <= 0) return false;
  mixed_process(&part_.state, piece.data(), static_cast<unsigned long>(count));
  part_.length += count;
  length_ = part_.length;
  return true;
}

}  // namespace quillory
