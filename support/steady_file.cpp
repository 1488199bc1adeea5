#include "support/steady_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace quillory {
namespace {

constexpr std::size_t kMostPending = 64 * 1024;
constexpr std::size_t kReadBlock = 64 * 1024;

// False for a failure, with its errno.
bool appendAll(int descriptor, std::string& bytes) {
  for (;;) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kReadBlock);
    const ssize_t count = readSteadily(descriptor, bytes.data() + before, kReadBlock);
    bytes.resize(before + static_cast<std::size_t>(count < 0 ? 0 : count));
    if (count < 0) return false;
    if (static_cast<std::size_t>(count) < kReadBlock) return true;
  }
}

}  // namespace

OwnedDescriptor& OwnedDescriptor::operator=(OwnedDescriptor&& other) noexcept {
  if (this != &other) {
    reset();
    descriptor_ = other.release();
  }
  return *this;
}

int OwnedDescriptor::release() { return std::exchange(descriptor_, -1); }

void OwnedDescriptor::reset() {
  if (descriptor_ != -1) ::close(release());
}

OwnedDescriptor openSteadily(const std::string& path, int flags, mode_t mode) {
  return OwnedDescriptor(
      untilUninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

ssize_t readSteadily(int descriptor, void* buffer, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    char* const place = static_cast<char*>(buffer) + done;
    const ssize_t count = untilUninterrupted([&] { return read(descriptor, place, size - done); });
    if (count < 0) return -1;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(done);
}

bool writeSteadily(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        untilUninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::optional<std::string> readWholeFile(const std::string& path) {
  std::string bytes;
  const bool isRead = inTwoTries([&] {
    bytes.clear();
    const OwnedDescriptor file = openSteadily(path, O_RDONLY);
    return file.get() != -1 && appendAll(file.get(), bytes);
  });
  if (!isRead) return std::nullopt;
  return bytes;
}

OwnedFile streamOver(const std::string& bytes) {
  // Not every system has a stream over no bytes at all.
  if (bytes.empty()) return OwnedFile(std::fopen("/dev/null", "rb"));
  // One more, for the zero byte that is put behind what is written.
  OwnedFile stream(fmemopen(nullptr, bytes.size() + 1, "w+"));
  if (!stream) return nullptr;
  const bool isFilled = std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size();
  std::rewind(stream.get());
  return isFilled ? std::move(stream) : OwnedFile();
}

bool SteadyWriter::write(const void* data, std::size_t size) {
  const std::string_view bytes(static_cast<const char*>(data), size);
  if (pending_.size() + size < kMostPending) {
    pending_.append(bytes);
    return true;
  }
  return flush() && writeSteadily(descriptor_.get(), bytes);
}

bool SteadyWriter::flush() {
  const bool isDone = writeSteadily(descriptor_.get(), pending_);
  pending_.clear();
  return isDone;
}

bool SteadyWriter::close() {
  const bool isFlushed = flush();
  const int why = errno;
  const bool isClosed = ::close(descriptor_.release()) == 0 || errno == EINTR;
  if (!isFlushed) errno = why;
  return isFlushed && isClosed;
}

}  // namespace quillory
