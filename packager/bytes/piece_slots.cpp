#include "packager/bytes/piece_slots.h"

#include <algorithm>
#include <thread>

namespace quillory::pack {
namespace {

constexpr unsigned kHeldPerSlot = 3;
constexpr unsigned kFewestSlots = 2;
constexpr unsigned kMostSlots = 8;

}  // namespace

PieceSlots::PieceSlots(unsigned count) : mayHold_(count * kHeldPerSlot), free_(count) {}

PieceSlots::Token PieceSlots::tokenOf(unsigned& count) {
  --count;
  return {&count, [this](void* taken) {
            const std::lock_guard lock(mutex_);
            ++*static_cast<unsigned*>(taken);
            changed_.notify_all();
          }};
}

PieceSlots::Token PieceSlots::hold() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return mayHold_ > 0; });
  return tokenOf(mayHold_);
}

PieceSlots::Token PieceSlots::take(std::size_t length) {
  std::unique_lock lock(mutex_);
  const auto own = waiting_.insert(length);
  changed_.wait(lock, [&] { return free_ > 0 && length == *waiting_.rbegin(); });
  waiting_.erase(own);
  changed_.notify_all();  // there may be one for the next
  return tokenOf(free_);
}

std::size_t PieceSlots::waiting() const {
  const std::lock_guard lock(mutex_);
  return waiting_.size();
}

unsigned usualPieceSlots() {
  return std::clamp(std::thread::hardware_concurrency(), kFewestSlots, kMostSlots);
}

}  // namespace quillory::pack
