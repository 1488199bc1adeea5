// Compresses a long stream as pieces, several at the same time, into one LZMA-alone stream.
#pragma once
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "lzma/lzma_pieces.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

/// How many pieces, of all streams that share it, are compressed at a time: each takes some eleven
/// times its length of memory.
class PieceSlots {
 public:
  explicit PieceSlots(unsigned count) : free_(count) {}
  /// Waits until there is one.
  void take();
  void giveBack();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  unsigned free_;
};

/// As many as this machine works on at a time, and one more, so that none of its processors waits
/// for the last ones; within what memory allows.
unsigned usualPieceSlots();

/// Where a piece of a stream begins that is not its first. Cuts are the same on every machine, or
/// the same content would not have the same bytes.
struct LzmaCut {
  std::uint64_t start = 0;  ///< a multiple of 16, beyond that of the cut before
  std::size_t known = 0;    ///< how much of what is before it the piece may copy from
};

/// Is told how many bytes more of which piece, counted from 0, have been compressed. When it
/// becomes part of the stream, which takes some of the time, its kSplicedShare-th part is told once
/// more.
inline constexpr std::size_t kSplicedShare = 14;
using PieceWatch = std::function<void(std::size_t piece, std::size_t bytes)>;

class PiecewiseLzmaSink : public ByteSink {
 public:
  /// `next` and `slots` are borrowed. `watch` is told, in any thread, what has been compressed;
  /// what it throws comes out of write() or finish().
  PiecewiseLzmaSink(int level, ByteSink& next, const LzmaTuning& tuning, std::vector<LzmaCut> cuts,
                    PieceSlots& slots, PieceWatch watch);
  /// Waits for pieces that are being compressed.
  ~PiecewiseLzmaSink() override = default;

  void write(std::string_view bytes) override;
  /// Says that the content is complete; the rest of the stream is written then.
  void finish();

 private:
  struct Compressed {
    LzmaPiece piece;
    std::string error{};
  };

  void cut(std::size_t known);
  void splice(const Compressed& done);

  int level_;
  LzmaTuning tuning_;
  std::vector<LzmaCut> cuts_;
  PieceSlots& slots_;
  PieceWatch watch_;
  LzmaSplicer splicer_;
  LzmaPiece collected_;
  std::uint64_t taken_ = 0;
  std::size_t cut_ = 0;      // the next one
  std::size_t spliced_ = 0;  // pieces
  std::deque<std::future<Compressed>> running_;
};

}  // namespace quillory::pack
