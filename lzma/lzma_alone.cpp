#include "lzma/lzma_alone.h"

#include <lzma.h>

#include <array>
#include <cstdint>
#include <utility>

#include "lzma/large_blocks.h"

namespace quillory {
namespace {

constexpr std::size_t kOutputBuffer = 64 * 1024;
// What a decoder needs beside its dictionary: far less than this.
constexpr std::uint64_t kDecoderOverhead = std::uint64_t{16} << 20;

const char* describe(lzma_ret result) {
  switch (result) {
    case LZMA_FORMAT_ERROR:
      return "not an LZMA-alone stream";
    case LZMA_DATA_ERROR:
      return "the LZMA stream is damaged";
    case LZMA_MEMLIMIT_ERROR:
      return "the LZMA stream asks for a dictionary of more than 256 MiB";
    case LZMA_MEM_ERROR:
      return "out of memory";
    case LZMA_OPTIONS_ERROR:
      return "unsupported LZMA options";
    default:
      return "unexpected result of the LZMA library";
  }
}

}  // namespace

struct LzmaCoder::State {
  lzma_stream stream = LZMA_STREAM_INIT;
  LzmaSink sink;
  std::string error;
  bool decodes = false;
  bool ended = false;
  std::array<unsigned char, kOutputBuffer> out;

  State() = default;
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { lzma_end(&stream); }

  bool fail(const char* text) {
    error = text;
    return false;
  }

  bool handOver() {
    const std::size_t size = out.size() - stream.avail_out;
    stream.next_out = out.data();
    stream.avail_out = out.size();
    return size == 0 || sink(out.data(), size) || fail("the output could not be written");
  }

  bool run(lzma_action action) {
    for (;;) {
      stream.next_out = out.data();
      stream.avail_out = out.size();
      const lzma_ret result = lzma_code(&stream, action);
      if (result != LZMA_OK && result != LZMA_STREAM_END && result != LZMA_BUF_ERROR) {
        return fail(describe(result));
      }
      const bool filled = stream.avail_out == 0;
      if (!handOver()) {
        return false;
      }
      if (result == LZMA_STREAM_END) {
        ended = true;
        return stream.avail_in == 0 || fail("there are bytes behind the end of the LZMA stream");
      }
      // A decoder that stops without filling the buffer has nothing left to work on.
      if (!filled && stream.avail_in == 0 && (action == LZMA_RUN || decodes)) {
        return true;
      }
    }
  }
};

LzmaCoder::LzmaCoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
LzmaCoder::LzmaCoder(LzmaCoder&&) noexcept = default;
LzmaCoder::~LzmaCoder() = default;

LzmaCoder LzmaCoder::encoder(int level, LzmaSink sink) {
  auto state = std::make_unique<State>();
  state->sink = std::move(sink);
  state->stream.allocator = largeBlocks();
  lzma_options_lzma options;
  if (level < kLzmaFastest || level > kLzmaBest ||
      lzma_lzma_preset(&options, static_cast<std::uint32_t>(level))) {
    state->fail("the compression level is not 0 to 9");
  } else if (const lzma_ret result = lzma_alone_encoder(&state->stream, &options);
             result != LZMA_OK) {
    state->fail(describe(result));
  }
  return LzmaCoder(std::move(state));
}

LzmaCoder LzmaCoder::decoder(LzmaSink sink) {
  auto state = std::make_unique<State>();
  state->sink = std::move(sink);
  state->decodes = true;
  const lzma_ret result =
      lzma_alone_decoder(&state->stream, kLzmaLargestDictionary + kDecoderOverhead);
  if (result != LZMA_OK) {
    state->fail(describe(result));
  }
  return LzmaCoder(std::move(state));
}

bool LzmaCoder::write(const void* data, std::size_t size) {
  if (!state_->error.empty()) {
    return false;
  }
  if (size == 0) {
    return true;
  }
  if (state_->ended) {
    return state_->fail("there are bytes behind the end of the LZMA stream");
  }
  state_->stream.next_in = static_cast<const unsigned char*>(data);
  state_->stream.avail_in = size;
  return state_->run(LZMA_RUN);
}

bool LzmaCoder::finish() {
  if (!state_->error.empty()) {
    return false;
  }
  if (!state_->ended) {
    state_->stream.avail_in = 0;
    if (!state_->run(LZMA_FINISH)) {
      return false;
    }
  }
  return state_->ended || state_->fail("the LZMA stream is cut short");
}

const std::string& LzmaCoder::error() const { return state_->error; }

}  // namespace quillory
