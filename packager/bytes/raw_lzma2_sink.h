// Compresses what goes through it to a raw LZMA2 stream, which may copy from bytes that its reader
// has already (lzma/raw_lzma2.h).
#pragma once
#include <cstdint>
#include <string_view>

#include "lzma/raw_lzma2.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

class RawLzma2Sink : public ByteSink {
 public:
  /// `known` is borrowed for this call, `next` until the end. Throws PackError when there is too
  /// little memory for the window.
  RawLzma2Sink(std::uint64_t window, int level, std::string_view known, ByteSink& next);
  void write(std::string_view bytes) override;
  /// Says that the content is complete; the rest of the stream is written then.
  void finish();

 private:
  RawLzma2Encoder coder_;
};

}  // namespace quillory::pack
