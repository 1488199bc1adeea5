// Compresses a long stream as pieces, several at the same time, into one LZMA-alone stream.
#pragma once
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <vector>

#include "lzma/lzma_pieces.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/piece_slots.h"

namespace quillory::pack {

/// What a piece is best begun at, so that it is searched for what is aligned as its stream is.
inline constexpr std::size_t kCutAlignment = 16;

/// Where a piece of a stream begins that is not its first. Cuts are the same on every machine, or
/// the same content would not have the same bytes.
struct LzmaCut {
  std::uint64_t start = 0;  ///< beyond that of the cut before
  std::size_t known = 0;    ///< how much of what is before it the piece may copy from
  std::size_t reach = 0;    ///< how far back, if that is less than the dictionary
};

/// Is told how many bytes more of which piece, counted from 0, have been compressed. What it knows
/// is looked through before, which takes a fifth of the time: the kKnownShare-th part of it is told
/// with the first of the others. When it becomes part of the stream, which takes some of the time
/// too, the kSplicedShare-th part of the others is told once more.
inline constexpr std::size_t kKnownShare = 5;
inline constexpr std::size_t kSplicedShare = 14;
using PieceWatch = std::function<void(std::size_t piece, std::size_t bytes)>;

/// What compressing pieces has made before. Both are called in any thread.
struct PieceStore {
  /// Hands the compressed piece, the so-manieth, to the sink; false, with nothing handed over,
  /// where it is not kept. Of such a piece the watch is told nothing but its splicing.
  std::function<bool(std::size_t number, const LzmaPiece& piece, ByteSink& packed)> fetch;
  std::function<void(const LzmaPiece& piece, const std::string& packed)> keep;
};

class PiecewiseLzmaSink : public ByteSink {
 public:
  /// `next` and `slots` are borrowed; `next` is written to in another thread, until finish() or the
  /// end of the scope. `watch` is told, in any thread, what has been done; what it throws comes out
  /// of write() or finish(), as what `next` throws. Without a store, all is compressed.
  PiecewiseLzmaSink(int level, ByteSink& next, const LzmaTuning& tuning, std::vector<LzmaCut> cuts,
                    PieceSlots& slots, PieceWatch watch, PieceStore store = {});
  /// Waits for pieces that are being compressed.
  ~PiecewiseLzmaSink() override;

  void write(std::string_view bytes) override;
  /// Says that the content is complete; the rest of the stream is written then.
  void finish();

 private:
  struct Piece;

  void cut(const LzmaCut& at);
  void tell(std::size_t piece, std::size_t bytes);
  void compress(Piece& piece);
  void splice();
  void spliceOne(Piece& piece);
  std::unique_ptr<Piece> nextToSplice();
  void noMore();

  int level_;
  LzmaTuning tuning_;
  std::vector<LzmaCut> cuts_;
  PieceSlots& slots_;
  PieceWatch watch_;
  PieceStore store_;
  LzmaSplicer splicer_;
  LzmaPiece collected_;
  std::uint64_t taken_ = 0;
  std::size_t cut_ = 0;  // the next one

  std::mutex mutex_;  // of what both threads know
  std::condition_variable changed_;
  std::deque<std::unique_ptr<Piece>> cutOff_;
  bool hasEnded_ = false;
  bool hasFailed_ = false;
  std::future<void> splicing_;
};

}  // namespace quillory::pack
