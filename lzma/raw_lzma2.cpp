#include "lzma/raw_lzma2.h"

#include <algorithm>
#include <array>
#include <utility>

#include "lzma/coder_state.h"
#include "lzma/large_blocks.h"

namespace quillory {
namespace {

// A chunk of LZMA2 that holds bytes as they are: a control byte, the length less one as 16 bits,
// most significant byte first, and the bytes. The first of a stream forgets what was before.
constexpr unsigned char kFirstPlainChunk = 1;
constexpr unsigned char kPlainChunk = 2;
constexpr std::size_t kMostInChunk = std::size_t{1} << 16;

// False, noted, for a window that the library would refuse or round up.
bool setWindow(CoderState& state, lzma_options_lzma& options, std::uint64_t window) {
  if (window < kSmallestWindow || window > kLargestWindow)
    return state.fail("the window is beyond what LZMA has");
  options.dict_size = static_cast<std::uint32_t>(window);
  return true;
}

std::array<lzma_filter, 2> filtersOf(lzma_options_lzma& options) {
  return {{{LZMA_FILTER_LZMA2, &options}, {LZMA_VLI_UNKNOWN, nullptr}}};
}

}  // namespace

RawLzma2Encoder::RawLzma2Encoder(std::uint64_t window, int level, std::string_view known,
                                 LzmaSink sink)
    : state_(std::make_unique<CoderState>(std::move(sink), false)) {
  state_->stream.allocator = largeBlocks();
  lzma_options_lzma options;
  if (level < kLzmaFastest || level > kLzmaBest ||
      lzma_lzma_preset(&options, static_cast<std::uint32_t>(level))) {
    state_->fail("the compression level is not 0 to 9");
    return;
  }
  if (!setWindow(*state_, options, window)) return;
  known.remove_prefix(known.size() - std::min<std::size_t>(known.size(), window));
  options.preset_dict = reinterpret_cast<const unsigned char*>(known.data());
  options.preset_dict_size = static_cast<std::uint32_t>(known.size());
  state_->noteResult(lzma_raw_encoder(&state_->stream, filtersOf(options).data()));
}

RawLzma2Encoder::RawLzma2Encoder(RawLzma2Encoder&&) noexcept = default;
RawLzma2Encoder::~RawLzma2Encoder() = default;

bool RawLzma2Encoder::write(const void* data, std::size_t size) {
  return state_->write(data, size);
}
bool RawLzma2Encoder::finish() { return state_->finish(); }
const std::string& RawLzma2Encoder::error() const { return state_->error; }

// Lets nothing pass as long as the known bytes come out again.
struct RawLzma2Decoder::Gate {
  LzmaSink sink;
  bool isOpen = false;
  bool knowsAny = false;
};

RawLzma2Decoder::RawLzma2Decoder(std::uint64_t window, LzmaSink sink)
    : gate_(std::make_unique<Gate>(Gate{std::move(sink)})),
      state_(std::make_unique<CoderState>(
          [gate = gate_.get()](const unsigned char* data, std::size_t size) {
            return !gate->isOpen || gate->sink(data, size);
          },
          true)) {
  // A window is written from one end to the other at once, page by page otherwise.
  state_->stream.allocator = largeBlocks();
  lzma_options_lzma options{};
  if (!setWindow(*state_, options, window)) return;
  state_->noteResult(lzma_raw_decoder(&state_->stream, filtersOf(options).data()));
}

RawLzma2Decoder::RawLzma2Decoder(RawLzma2Decoder&&) noexcept = default;
RawLzma2Decoder::~RawLzma2Decoder() = default;

// The decoder gets them as chunks that are not compressed: the library would want all of them in
// one block of memory, beside the window that it copies them into.
bool RawLzma2Decoder::know(std::string_view bytes) {
  if (gate_->isOpen) return state_->fail("bytes cannot become known in the middle of a stream");
  while (!bytes.empty()) {
    const std::string_view chunk = bytes.substr(0, kMostInChunk);
    const std::size_t length = chunk.size() - 1;
    const std::array<unsigned char, 3> head = {gate_->knowsAny ? kPlainChunk : kFirstPlainChunk,
                                               static_cast<unsigned char>(length >> 8),
                                               static_cast<unsigned char>(length & 0xFF)};
    if (!state_->write(head.data(), head.size()) || !state_->write(chunk.data(), chunk.size()))
      return false;
    gate_->knowsAny = true;
    bytes.remove_prefix(chunk.size());
  }
  return true;
}

bool RawLzma2Decoder::write(const void* data, std::size_t size) {
  gate_->isOpen = true;
  return state_->write(data, size);
}
bool RawLzma2Decoder::finish() {
  gate_->isOpen = true;
  return state_->finish();
}
const std::string& RawLzma2Decoder::error() const { return state_->error; }

}  // namespace quillory
