// How long packing takes still, judged by how fast it has been. Parts of different lengths are
// worked on side by side, and at the end the longest one is worked on alone: what is left of all,
// divided by the speed of all, would promise too little.
#pragma once
#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace quillory::pack {

/// A part of the work, in bytes. Counted by a working thread, seen by the one that waits.
struct WorkPart {
  explicit WorkPart(std::uint64_t all) : total(all) {}
  const std::uint64_t total;
  std::atomic<std::uint64_t> done{0};
  std::atomic<bool> isSkipped{false};  ///< it turned out that there is nothing to do
};

class RestTime {
 public:
  /// `atATime`: how many parts a machine works on with full speed, its processors.
  explicit RestTime(unsigned atATime) : atATime_(atATime) {}

  /// Looks at the parts, so many seconds after the start; again and again.
  void look(double seconds, const std::deque<WorkPart>& parts);

  /// Seconds until all is done, as it looked last; none as long as that cannot be told.
  std::optional<double> rest() const { return rest_; }

 private:
  unsigned atATime_;
  double lastLook_ = 0;
  unsigned lastActive_ = 0;
  double worked_ = 0;  // seconds of processors
  std::optional<double> rest_;
};

/// "12 s left", "3 min left"; "" where it cannot be told.
std::string readableRest(std::optional<double> seconds);

}  // namespace quillory::pack
