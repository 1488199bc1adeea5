// LZMA-alone streams (".lzma": a 13-byte header, then one raw stream), over liblzma. Bytes are
// pushed in and come out through a sink, so that a stream of any size needs the memory of one
// dictionary and two small buffers.
#pragma once
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace quillory {

/// Takes the bytes that come out; false stops the coder with an error.
using LzmaSink = std::function<bool(const unsigned char* data, std::size_t size)>;

inline constexpr int kLzmaFastest = 0;
inline constexpr int kLzmaDefaultLevel = 6;
inline constexpr int kLzmaBest = 9;

/// Streams whose header asks for a dictionary beyond this are refused instead of allocated.
inline constexpr std::size_t kLzmaLargestDictionary = std::size_t{256} << 20;

/// The error of a coder that the system has given too little memory.
inline constexpr char kOutOfMemory[] = "out of memory";

/// What a stream is tuned to; as it stands here, what the xz tools take.
struct LzmaTuning {
  int literalContextBits = 3;   ///< 0 to 4, with the next one at most 4
  int literalPositionBits = 0;  ///< 0 to 4
  int positionBits = 2;         ///< 0 to 4
  /// How far back a stream may copy from, in bytes, which is the memory that its decoder takes; 0
  /// for that of the level, and never beyond kLzmaLargestDictionary.
  std::size_t dictionary = 0;
  /// How many of the places that look alike are compared before the best of them is taken; 0 for as
  /// many as the level says.
  int searchDepth = 0;
};

class CoderState;

class LzmaCoder {
 public:
  /// `level` is the preset of the xz tools, 0 to 9. The length is not stored: an end marker is.
  /// With another level, or a tuning that there is not, there is an error from the start, and every
  /// write() fails.
  static LzmaCoder encoder(int level, LzmaSink sink, const LzmaTuning& tuning = {});
  /// Takes streams with a stored length and with an end marker.
  static LzmaCoder decoder(LzmaSink sink);

  LzmaCoder(LzmaCoder&&) noexcept;
  ~LzmaCoder();

  /// False once anything has gone wrong; error() then says what.
  bool write(const void* data, std::size_t size);
  /// Says that the input is complete. A decoder that has not met the end of its stream, or that met
  /// bytes behind it, fails here.
  bool finish();
  /// What went wrong first, for people; "" while nothing has.
  const std::string& error() const;

 private:
  explicit LzmaCoder(std::unique_ptr<CoderState> state);
  std::unique_ptr<CoderState> state_;
};

}  // namespace quillory
