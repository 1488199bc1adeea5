// Which pieces are compressed, of all streams that share it: as many at a time as there are slots,
// and always those of which most is left. So all end at about the same time, on every machine and
// however it shares its processors out, and none is worked on alone while a processor is idle.
#pragma once
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>

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

  /// A slot, as long as it lives. One piece more than there are slots may have begun: each takes
  /// some eleven times its length of memory.
  class Turn {
   public:
    /// Waits for a slot, for a piece of which that many bytes are left.
    Turn(PieceSlots& slots, std::size_t left);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    /// Lets another piece go on first where clearly more is left of that, and waits meanwhile.
    void pass(std::size_t left);

   private:
    PieceSlots& slots_;
  };

  /// How many wait for a slot.
  std::size_t waiting() const;

 private:
  struct Waiting {
    std::size_t left;
    bool hasBegun;
  };

  const Waiting* next() const;
  void wait(std::unique_lock<std::mutex>& lock, const Waiting& own);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  unsigned mayHold_;
  unsigned mayBegin_;
  unsigned free_;
  std::list<Waiting> waiting_;
};

/// As many as this machine works on at a time, two at least, within what memory allows.
unsigned usualPieceSlots();

}  // namespace quillory::pack
