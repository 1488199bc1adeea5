// Reading and writing by descriptors, as far as nothing but chance is in the way: a call that a
// signal interrupts is made again, and a transfer that did a part goes on behind it. The C
// library's streams do neither, and drop what they had buffered.
#pragma once
#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "support/owned.h"

namespace quillory {

/// The result of `call`, which returns -1 and an errno for a failure, once no signal interrupts it.
template <typename Call>
auto untilUninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// Whether `attempt` succeeds, the first time or the second: what a disk across a network refuses
/// once, it often does when it is asked again.
template <typename Attempt>
bool inTwoTries(Attempt attempt) {
  return attempt() || attempt();
}

/// Closes a descriptor. -1 is none.
class OwnedDescriptor {
 public:
  OwnedDescriptor() = default;
  explicit OwnedDescriptor(int descriptor) : descriptor_(descriptor) {}
  OwnedDescriptor(OwnedDescriptor&& other) noexcept : descriptor_(other.release()) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept;
  ~OwnedDescriptor() { reset(); }

  int get() const { return descriptor_; }
  int release();
  void reset();

 private:
  int descriptor_ = -1;
};

/// open(2), closed in other programs. None, with the reason in errno, where it cannot be opened.
OwnedDescriptor openSteadily(const std::string& path, int flags, mode_t mode = 0);

/// Up to `size` bytes, fewer only at the end; -1, with the reason in errno, for a failure.
ssize_t readSteadily(int descriptor, void* buffer, std::size_t size);

/// Whether all could be written; the reason is in errno if not.
bool writeSteadily(int descriptor, std::string_view bytes);

/// All bytes of a file, in two tries; nothing, with the reason in errno, where it cannot be read.
/// A folder is none.
std::optional<std::string> readWholeFile(const std::string& path);

/// A stream that reads a copy of `bytes`. Null where memory is short.
OwnedFile streamOver(const std::string& bytes);

/// What is written to a descriptor in small parts, collected. It is the caller's to flush and to
/// close; what was not flushed is dropped.
class SteadyWriter {
 public:
  SteadyWriter() = default;
  explicit SteadyWriter(OwnedDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  bool isOpen() const { return descriptor_.get() != -1; }
  int descriptor() const { return descriptor_.get(); }
  /// False for a failure of this or an earlier part; the reason is in errno.
  bool write(const void* data, std::size_t size);
  bool flush();
  /// Flushes first. Closed in any case.
  bool close();

 private:
  OwnedDescriptor descriptor_;
  std::string pending_;
};

}  // namespace quillory
