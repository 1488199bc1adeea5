// How many pieces are compressed at a time, of all streams that share it, and which comes next: the
// longest of those that wait, or it would be worked on alone at the end.
#pragma once
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <set>

namespace quillory::pack {

class PieceSlots {
 public:
  explicit PieceSlots(unsigned count);
  PieceSlots(const PieceSlots&) = delete;
  PieceSlots& operator=(const PieceSlots&) = delete;

  /// Ends what it was given for. No longer than the slots.
  using Token = std::shared_ptr<void>;

  /// Waits until another piece may lie in memory: a few times as many as there are slots, for those
  /// that wait for one and those that become part of their stream.
  Token hold();
  /// Waits until there is a slot and no longer piece that waits for one. A slot takes some eleven
  /// times the length of memory.
  Token take(std::size_t length);
  /// How many wait for a slot.
  std::size_t waiting() const;

 private:
  Token tokenOf(unsigned& count);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  unsigned mayHold_;
  unsigned free_;
  std::multiset<std::size_t> waiting_;
};

/// As many as this machine works on at a time, two at least, within what memory allows.
unsigned usualPieceSlots();

}  // namespace quillory::pack
