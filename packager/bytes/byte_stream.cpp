#include "packager/bytes/byte_stream.h"

#include <algorithm>

namespace quillory::pack {
namespace {

constexpr std::size_t kMostAtOnce = std::size_t{64} << 10;

}  // namespace

void ByteStream::append(std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  bytes_.append(bytes);
  changed_.notify_all();
}

void ByteStream::end() {
  const std::lock_guard lock(mutex_);
  hasEnded_ = true;
  changed_.notify_all();
}

std::string_view ByteStream::read() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return read_ < bytes_.size() || hasEnded_; });
  // A copy: more may come meanwhile, which moves them.
  block_.assign(bytes_, read_, std::min(kMostAtOnce, bytes_.size() - read_));
  read_ += block_.size();
  return block_;
}

}  // namespace quillory::pack
