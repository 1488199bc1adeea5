// One LZMA-alone stream out of pieces that were compressed side by side. liblzma compresses a
// stream on one thread. What takes its time is the search for repetitions, and that can be done for
// several pieces at once; what cannot is the coding of what was found, which goes by what all bits
// before it were, and takes a twentieth of the time. So each piece is compressed by itself, and its
// symbols are then coded anew, one piece after another.
//
// The stream is a function of the pieces, the level and the tuning, and not of the threads.
#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "lzma/lzma_alone.h"

namespace quillory {

/// A part of a stream on its way.
struct LzmaPiece {
  /// What is to be compressed, behind `known` bytes that stand before it in the stream, and from
  /// which it may copy. `known` is a multiple of 16.
  std::string bytes;
  std::size_t known = 0;
  std::string packed{};  ///< compressed by itself; by compressPiece()
};

/// Is told how many bytes more have been compressed, now and then; what it throws is passed on.
using LzmaWatch = std::function<void(std::size_t)>;

/// Compresses a piece by itself, in any thread. "", or what went wrong, for people: a level, or a
/// tuning, that there is not, or too little memory, some eleven times the piece.
std::string compressPiece(LzmaPiece& piece, int level, const LzmaTuning& tuning,
                          const LzmaWatch& watch);

class LzmaSplicer {
 public:
  /// `tuning` is that of the pieces; its dictionary, a power of two, is what the header names.
  LzmaSplicer(const LzmaTuning& tuning, LzmaSink sink);
  ~LzmaSplicer();
  LzmaSplicer(const LzmaSplicer&) = delete;
  LzmaSplicer& operator=(const LzmaSplicer&) = delete;

  /// The next piece, compressed. False when the sink stops, or when it was not what it should be;
  /// nothing more can be added then.
  bool add(const LzmaPiece& piece);
  /// Says that no more are to come.
  bool finish();

 private:
  class RangeWriter;
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace quillory
