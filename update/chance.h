// Numbers that nobody can foretell: the draw of a rollout, and the jitter that keeps a million
// installations from asking at the same moment.
#pragma once
#include <cstdint>
#include <string>

namespace quillory::update {

struct ChanceCalls {
  std::uint64_t (*next)();  ///< any of 2^64
};
/// Assigned to by tests only. It asks the system, and needs no file.
extern ChanceCalls chanceCalls;

/// 32 hexadecimal digits.
std::string newDraw();

/// From 0 up to, but not including, 1.
double anyPart();

}  // namespace quillory::update
