#include "lzma/coder_state.h"

namespace quillory {
namespace {

const char* describe(lzma_ret result) {
  switch (result) {
    case LZMA_FORMAT_ERROR:
      return "not an LZMA-alone stream";
    case LZMA_DATA_ERROR:
      return "the LZMA stream is damaged";
    case LZMA_MEMLIMIT_ERROR:
      return "the LZMA stream asks for a dictionary of more than 256 MiB";
    case LZMA_MEM_ERROR:
      return kOutOfMemory;
    case LZMA_OPTIONS_ERROR:
      return "unsupported LZMA options";
    default:
      return "unexpected result of the LZMA library";
  }
}

}  // namespace

bool CoderState::fail(const char* text) {
  if (error.empty()) error = text;
  return false;
}

void CoderState::noteResult(lzma_ret result) {
  if (result != LZMA_OK) fail(describe(result));
}

bool CoderState::handOver() {
  const std::size_t size = out_.size() - stream.avail_out;
  stream.next_out = out_.data();
  stream.avail_out = out_.size();
  return size == 0 || sink(out_.data(), size) || fail("the output could not be written");
}

bool CoderState::run(lzma_action action) {
  for (;;) {
    stream.next_out = out_.data();
    stream.avail_out = out_.size();
    const lzma_ret result = lzma_code(&stream, action);
    if (result != LZMA_OK && result != LZMA_STREAM_END && result != LZMA_BUF_ERROR) {
      return fail(describe(result));
    }
    const bool filled = stream.avail_out == 0;
    if (!handOver()) {
      return false;
    }
    if (result == LZMA_STREAM_END) {
      ended_ = true;
      return stream.avail_in == 0 || fail("there are bytes behind the end of the LZMA stream");
    }
    // A decoder that stops without filling the buffer has nothing left to work on.
    if (!filled && stream.avail_in == 0 && (action == LZMA_RUN || decodes_)) {
      return true;
    }
  }
}

bool CoderState::write(const void* data, std::size_t size) {
  if (!error.empty()) {
    return false;
  }
  if (size == 0) {
    return true;
  }
  if (ended_) {
    return fail("there are bytes behind the end of the LZMA stream");
  }
  stream.next_in = static_cast<const unsigned char*>(data);
  stream.avail_in = size;
  return run(LZMA_RUN);
}

bool CoderState::finish() {
  if (!error.empty()) {
    return false;
  }
  if (!ended_) {
    stream.avail_in = 0;
    if (!run(LZMA_FINISH)) {
      return false;
    }
  }
  return ended_ || fail("the LZMA stream is cut short");
}

}  // namespace quillory
