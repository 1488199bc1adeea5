// Raw LZMA2 streams: no header and no checks, for a format that has its own. A coder may begin with
// bytes that are known to both sides: what is in them is copied from there instead of stored, and a
// stream that was made with them can be undone only with the same.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "lzma/lzma_alone.h"

namespace quillory {

/// How far back a stream may copy from: the known bytes and what came out count alike. A decoder
/// takes that much memory, an encoder six to twelve times as much.
inline constexpr std::uint64_t kSmallestWindow = 4096;
inline constexpr std::uint64_t kLargestWindow = std::uint64_t{1536} << 20;

class RawLzma2Encoder {
 public:
  /// `known` is borrowed for this call only; of more than the window its end counts. Beyond the
  /// windows above, or `level` beyond 0 to 9, there is an error from the start.
  RawLzma2Encoder(std::uint64_t window, int level, std::string_view known, LzmaSink sink);
  RawLzma2Encoder(RawLzma2Encoder&&) noexcept;
  ~RawLzma2Encoder();

  /// False once anything has gone wrong; error() then says what.
  bool write(const void* data, std::size_t size);
  /// Says that the input is complete.
  bool finish();
  const std::string& error() const;

 private:
  std::unique_ptr<CoderState> state_;
};

class RawLzma2Decoder {
 public:
  RawLzma2Decoder(std::uint64_t window, LzmaSink sink);
  RawLzma2Decoder(RawLzma2Decoder&&) noexcept;
  ~RawLzma2Decoder();

  /// The known bytes, in pieces of any size, before anything is written. They do not reach the
  /// sink, and no second copy of them is held: the memory is that of the window.
  bool know(std::string_view bytes);

  /// False once anything has gone wrong; error() then says what.
  bool write(const void* data, std::size_t size);
  /// Says that the input is complete; fails before the end of the stream and with bytes behind it.
  bool finish();
  const std::string& error() const;

 private:
  struct Gate;
  std::unique_ptr<Gate> gate_;
  std::unique_ptr<CoderState> state_;
};

}  // namespace quillory
