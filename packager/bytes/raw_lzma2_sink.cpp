#include "packager/bytes/raw_lzma2_sink.h"

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

[[noreturn]] void throwErrorOf(const RawLzma2Encoder& coder) {
  throw PackError("compressing failed: " + coder.error());
}

}  // namespace

RawLzma2Sink::RawLzma2Sink(std::uint64_t window, int level, std::string_view known, ByteSink& next)
    : coder_(window, level, known, [&next](const unsigned char* data, std::size_t size) {
        next.write({reinterpret_cast<const char*>(data), size});
        return true;
      }) {
  if (!coder_.error().empty()) throwErrorOf(coder_);
}

void RawLzma2Sink::write(std::string_view bytes) {
  if (!coder_.write(bytes.data(), bytes.size())) throwErrorOf(coder_);
}

void RawLzma2Sink::finish() {
  if (!coder_.finish()) throwErrorOf(coder_);
}

}  // namespace quillory::pack
