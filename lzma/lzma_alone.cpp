#include "lzma/lzma_alone.h"

#include <lzma.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "lzma/coder_state.h"
#include "lzma/large_blocks.h"

namespace quillory {
namespace {

// What a decoder needs beside its dictionary: far less than this.
constexpr std::uint64_t kDecoderOverhead = std::uint64_t{16} << 20;

}  // namespace

LzmaCoder::LzmaCoder(std::unique_ptr<CoderState> state) : state_(std::move(state)) {}
LzmaCoder::LzmaCoder(LzmaCoder&&) noexcept = default;
LzmaCoder::~LzmaCoder() = default;

LzmaCoder LzmaCoder::encoder(int level, LzmaSink sink, const LzmaTuning& tuning) {
  auto state = std::make_unique<CoderState>(std::move(sink), false);
  state->stream.allocator = largeBlocks();
  lzma_options_lzma options;
  if (level < kLzmaFastest || level > kLzmaBest ||
      lzma_lzma_preset(&options, static_cast<std::uint32_t>(level))) {
    state->fail("the compression level is not 0 to 9");
  } else {
    options.lc = static_cast<std::uint32_t>(tuning.literalContextBits);
    options.lp = static_cast<std::uint32_t>(tuning.literalPositionBits);
    options.pb = static_cast<std::uint32_t>(tuning.positionBits);
    if (tuning.searchDepth > 0) options.depth = static_cast<std::uint32_t>(tuning.searchDepth);
    if (tuning.dictionary != 0) {
      options.dict_size =
          static_cast<std::uint32_t>(std::min(tuning.dictionary, kLzmaLargestDictionary));
    }
    state->noteResult(lzma_alone_encoder(&state->stream, &options));
  }
  return LzmaCoder(std::move(state));
}

LzmaCoder LzmaCoder::decoder(LzmaSink sink) {
  auto state = std::make_unique<CoderState>(std::move(sink), true);
  state->stream.allocator = largeBlocks();
  state->noteResult(lzma_alone_decoder(&state->stream, kLzmaLargestDictionary + kDecoderOverhead));
  return LzmaCoder(std::move(state));
}

bool LzmaCoder::write(const void* data, std::size_t size) { return state_->write(data, size); }

bool LzmaCoder::finish() { return state_->finish(); }

const std::string& LzmaCoder::error() const { return state_->error; }

}  // namespace quillory
