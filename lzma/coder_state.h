// What every coder of this folder has inside: a stream of liblzma, the sink that its output goes
// to, and the first thing that went wrong. Not for other folders.
#pragma once
#include <lzma.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "lzma/lzma_alone.h"

namespace quillory {

class CoderState {
 public:
  CoderState(LzmaSink takesOutput, bool isDecoder)
      : sink(std::move(takesOutput)), decodes_(isDecoder) {}
  CoderState(const CoderState&) = delete;
  CoderState& operator=(const CoderState&) = delete;
  ~CoderState() { lzma_end(&stream); }

  bool write(const void* data, std::size_t size);
  bool finish();
  /// Keeps the text unless there is one; false.
  bool fail(const char* text);
  /// The same with what the library's result means, unless it means success.
  void noteResult(lzma_ret result);

  lzma_stream stream = LZMA_STREAM_INIT;
  LzmaSink sink;
  std::string error;

 private:
  static constexpr std::size_t kOutputBuffer = 64 * 1024;

  bool handOver();
  bool run(lzma_action action);

  bool decodes_;
  bool ended_ = false;
  std::array<unsigned char, kOutputBuffer> out_;
};

}  // namespace quillory
