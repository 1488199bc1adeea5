// The lines of a download that tell how far it is: at most ten a second.
#pragma once
#include <cstdint>

#include "update/lines.h"

namespace quillory::update {

class Progress {
 public:
  explicit Progress(Lines lines) : lines_(std::move(lines)) {}

  /// All bytes that are to be loaded from now on.
  void expect(std::int64_t total) { total_ = total; }
  /// What has been loaded, files that are complete included. What is there before the first byte
  /// comes does not count for the rate.
  void tell(std::int64_t done);
  /// The next call of tell() says its line, however soon it comes.
  void end() { lastTold_ = 0; }

 private:
  Lines lines_;
  std::int64_t total_ = 0;
  std::int64_t first_ = -1;
  std::uint64_t start_ = 0;
  std::uint64_t lastTold_ = 0;
};

}  // namespace quillory::update
