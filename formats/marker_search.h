// The search for a marker, over blocks of bytes that come from anywhere: the launcher's, and so the
// one that quillory-pack asks what the launcher would find.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace quillory {

/// Goes through bytes once and finds the first place where the marker stands. A mismatching byte is
/// not tried again as a first byte, so a marker that begins inside a partial match of itself, right
/// behind its own first byte say, is missed.
class MarkerSearch {
 public:
  explicit MarkerSearch(std::string marker) : marker_(std::move(marker)) {}

  /// Goes on with the bytes that follow those of earlier calls. How many of `block` were taken: up
  /// to the end of the marker when it has been found, else all of them. Takes none once it has.
  std::size_t take(std::string_view block);

  /// Whether all of the marker has gone by. An empty one is found before the first byte.
  bool isFound() const { return matched_ == marker_.size(); }

  /// Whether the last bytes were taken for a beginning of the marker: one that follows them right
  /// away would be missed.
  bool isInsideMatch() const { return matched_ > 0 && !isFound(); }

 private:
  std::string marker_;
  std::size_t matched_ = 0;
};

}  // namespace quillory
