#include "packager/bytes/piece_slots.h"

#include <algorithm>
#include <thread>

namespace quillory::pack {
namespace {

constexpr unsigned kHeldPerSlot = 3;
constexpr unsigned kFewestSlots = 2;
constexpr unsigned kMostSlots = 8;
// What a processor has at hand of a piece is lost when it changes to another one.
constexpr std::size_t kClearlyMore = std::size_t{3} << 20;

}  // namespace

PieceSlots::PieceSlots(unsigned count)
    : mayHold_(count * kHeldPerSlot), mayBegin_(count + 1), free_(count) {}

PieceSlots::Token PieceSlots::hold() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return mayHold_ > 0; });
  --mayHold_;
  return {&mayHold_, [this](unsigned* held) {
            const std::lock_guard locked(mutex_);
            ++*held;
            changed_.notify_all();
          }};
}

// Whose turn it is when there is a slot.
const PieceSlots::Waiting* PieceSlots::next() const {
  const Waiting* longest = nullptr;
  for (const Waiting& one : waiting_) {
    const bool may = one.hasBegun || mayBegin_ > 0;
    if (may && (longest == nullptr || one.left > longest->left)) longest = &one;
  }
  return longest;
}

void PieceSlots::wait(std::unique_lock<std::mutex>& lock, const Waiting& own) {
  const auto place = waiting_.insert(waiting_.end(), own);
  changed_.notify_all();
  changed_.wait(lock, [&] { return free_ > 0 && next() == &*place; });
  waiting_.erase(place);
  --free_;
  changed_.notify_all();  // there may be one for the next
}

PieceSlots::Turn::Turn(PieceSlots& slots, std::size_t left) : slots_(slots) {
  std::unique_lock lock(slots_.mutex_);
  slots_.wait(lock, {left, false});
  --slots_.mayBegin_;
}

PieceSlots::Turn::~Turn() {
  const std::lock_guard lock(slots_.mutex_);
  ++slots_.free_;
  ++slots_.mayBegin_;
  slots_.changed_.notify_all();
}

void PieceSlots::Turn::pass(std::size_t left) {
  std::unique_lock lock(slots_.mutex_);
  const Waiting* other = slots_.next();
  if (other == nullptr || other->left <= left + kClearlyMore) {
    return;
  }
  ++slots_.free_;
  slots_.wait(lock, {left, true});
}

std::size_t PieceSlots::waiting() const {
  const std::lock_guard lock(mutex_);
  return waiting_.size();
}

unsigned usualPieceSlots() {
  return std::clamp(std::thread::hardware_concurrency(), kFewestSlots, kMostSlots);
}

}  // namespace quillory::pack
