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
#include <string_view>

#include "lzma/lzma_alone.h"

namespace quillory {

/// A part of a stream.
struct LzmaPiece {
  /// What is to be compressed, behind `known` bytes that stand before it in the stream, and from
  /// which it may copy. `known` is a multiple of 16.
  std::string bytes;
  std::size_t known = 0;
  std::size_t reach = 0;  ///< how far back it may copy from, if that is less than the dictionary
};

/// Is told how many bytes more have been done, now and then; what it throws is passed on.
using LzmaWatch = std::function<void(std::size_t)>;

/// The next bytes of a compressed piece, waited for where they are still to come; none at its end.
/// They stay until the next call.
using LzmaSource = std::function<std::string_view()>;

/// Compresses a piece by itself, in any thread. "", or what went wrong, for people: a level, or a
/// tuning, that there is not, too little memory, some eleven times the piece, or a sink that stops.
std::string compressPiece(const LzmaPiece& piece, int level, const LzmaTuning& tuning,
                          LzmaSink packed, const LzmaWatch& watch);

class LzmaSplicer {
 public:
  /// `tuning` is that of the pieces; its dictionary, a power of two, is what the header names.
  LzmaSplicer(const LzmaTuning& tuning, LzmaSink sink);
  ~LzmaSplicer();
  LzmaSplicer(const LzmaSplicer&) = delete;
  LzmaSplicer& operator=(const LzmaSplicer&) = delete;

  /// The next piece, and what compressPiece() has made or is making of it. False when the sink
  /// stops, or when that was not what it should be; nothing more can be added then.
  bool add(const LzmaPiece& piece, LzmaSource packed, const LzmaWatch& watch);
  /// Says that no more are to come.
  bool finish();

 private:
  class RangeWriter;
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace quillory
