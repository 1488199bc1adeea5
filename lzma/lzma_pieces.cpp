#include "lzma/lzma_pieces.h"

#include <lzma.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include "lzma/coder_state.h"
#include "lzma/large_blocks.h"
#include "lzma/lzma_model.h"

namespace quillory {
namespace {

constexpr std::size_t kWatchedBlock = std::size_t{256} << 10;
constexpr std::uint32_t kSmallestRange = std::uint32_t{1} << 24;
constexpr std::size_t kOutputBlock = std::size_t{64} << 10;

class RangeReader {
 public:
  explicit RangeReader(LzmaSource packed) : source_(std::move(packed)) {
    for (int i = 0; i < 5; ++i) code_ = code_ << 8 | next();
  }

  int bit(Probability& probability, int) {
    const std::uint32_t bound = (range_ >> kProbabilityBits) * probability;
    int value = 0;
    if (code_ < bound) {
      range_ = bound;
      probability = static_cast<Probability>(
          probability + (((1 << kProbabilityBits) - probability) >> kLearningShift));
    } else {
      range_ -= bound;
      code_ -= bound;
      probability = static_cast<Probability>(probability - (probability >> kLearningShift));
      value = 1;
    }
    normalize();
    return value;
  }

  int plainBit(int) {
    range_ >>= 1;
    const int value = code_ >= range_ ? 1 : 0;
    if (value != 0) code_ -= range_;
    normalize();
    return value;
  }

  bool isCutShort() const { return missing_ > 0; }

 private:
  unsigned char next() {
    if (at_ == packed_.size()) {
      packed_ = source_();
      at_ = 0;
      if (packed_.empty()) {
        ++missing_;
        return 0;
      }
    }
    return static_cast<unsigned char>(packed_[at_++]);
  }
  void normalize() {
    if (range_ >= kSmallestRange) return;
    range_ <<= 8;
    code_ = code_ << 8 | next();
  }

  LzmaSource source_;
  std::string_view packed_;
  std::size_t at_ = 0;
  std::size_t missing_ = 0;
  std::uint32_t range_ = 0xFFFFFFFF;
  std::uint32_t code_ = 0;
};

unsigned char byteAt(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

// Whether it stands for what is at `at`.
bool isIn(std::string_view bytes, std::size_t at, const LzmaSymbol& symbol) {
  if (symbol.length == 0) return symbol.literal == byteAt(bytes, at);
  const std::size_t back = std::size_t{symbol.distance} + 1;
  return back <= at && symbol.length <= bytes.size() - at &&
         std::memcmp(bytes.data() + at, bytes.data() + at - back, symbol.length) == 0;
}

}  // namespace

std::string compressPiece(const LzmaPiece& piece, int level, const LzmaTuning& tuning,
                          LzmaSink packed, const LzmaWatch& watch) {
  lzma_options_lzma options;
  if (level < kLzmaFastest || level > kLzmaBest ||
      lzma_lzma_preset(&options, static_cast<std::uint32_t>(level))) {
    return "the compression level is not 0 to 9";
  }
  options.lc = static_cast<std::uint32_t>(tuning.literalContextBits);
  options.lp = static_cast<std::uint32_t>(tuning.literalPositionBits);
  options.pb = static_cast<std::uint32_t>(tuning.positionBits);
  if (tuning.searchDepth > 0) options.depth = static_cast<std::uint32_t>(tuning.searchDepth);
  std::size_t most = tuning.dictionary == 0 ? options.dict_size : tuning.dictionary;
  if (piece.reach != 0) most = std::min(most, piece.reach);
  options.dict_size = static_cast<std::uint32_t>(
      std::max<std::size_t>(std::min(piece.bytes.size(), most), LZMA_DICT_SIZE_MIN));
  options.preset_dict = reinterpret_cast<const unsigned char*>(piece.bytes.data());
  options.preset_dict_size = static_cast<std::uint32_t>(piece.known);
  const std::array<lzma_filter, 2> filters = {
      {{LZMA_FILTER_LZMA1, &options}, {LZMA_VLI_UNKNOWN, nullptr}}};
  CoderState state(std::move(packed), false);
  state.stream.allocator = largeBlocks();
  state.noteResult(lzma_raw_encoder(&state.stream, filters.data()));
  for (std::size_t at = piece.known; at < piece.bytes.size();) {
    const std::size_t size = std::min(kWatchedBlock, piece.bytes.size() - at);
    if (!state.write(piece.bytes.data() + at, size)) return state.error;
    at += size;
    watch(size);
  }
  state.finish();
  return state.error;
}

class LzmaSplicer::RangeWriter {
 public:
  explicit RangeWriter(LzmaSink sink) : sink_(std::move(sink)) { out_.reserve(kOutputBlock); }

  int bit(Probability& probability, int value) {
    const std::uint32_t bound = (range_ >> kProbabilityBits) * probability;
    if (value == 0) {
      range_ = bound;
      probability = static_cast<Probability>(
          probability + (((1 << kProbabilityBits) - probability) >> kLearningShift));
    } else {
      low_ += bound;
      range_ -= bound;
      probability = static_cast<Probability>(probability - (probability >> kLearningShift));
    }
    normalize();
    return value;
  }

  int plainBit(int value) {
    range_ >>= 1;
    if (value != 0) low_ += range_;
    normalize();
    return value;
  }

  void put(unsigned char byte) {
    out_.push_back(byte);
    if (out_.size() == kOutputBlock) handOver();
  }

  bool finish() {
    for (int i = 0; i < 5; ++i) shift();
    handOver();
    return !hasFailed_;
  }

  bool hasFailed() const { return hasFailed_; }

 private:
  void normalize() {
    if (range_ >= kSmallestRange) return;
    range_ <<= 8;
    shift();
  }

  // A byte can be written once no carry can reach it.
  void shift() {
    if (low_ < 0xFF000000 || low_ > 0xFFFFFFFF) {
      const auto carry = static_cast<unsigned char>(low_ >> 32);
      for (; waiting_ > 0; --waiting_) {
        put(static_cast<unsigned char>(cached_ + carry));
        cached_ = 0xFF;
      }
      cached_ = static_cast<unsigned char>(low_ >> 24 & 0xFF);
    }
    ++waiting_;
    low_ = (low_ & 0x00FFFFFF) << 8;
  }

  void handOver() {
    hasFailed_ = hasFailed_ || (!out_.empty() && !sink_(out_.data(), out_.size()));
    out_.clear();
  }

  LzmaSink sink_;
  std::vector<unsigned char> out_;
  bool hasFailed_ = false;
  std::uint64_t low_ = 0;
  std::uint32_t range_ = 0xFFFFFFFF;
  unsigned char cached_ = 0;
  std::uint64_t waiting_ = 1;
};

struct LzmaSplicer::Stream {
  Stream(const LzmaTuning& tuned, LzmaSink sink)
      : tuning(tuned), model(tuned), writer(std::move(sink)) {}

  // The byte that the next literal of the piece, at `at`, is compared with: it may be one of the
  // piece before, which ends behind the known bytes. 0 where there is none.
  unsigned char comparedIn(const LzmaPiece& piece, std::size_t at) const {
    const std::size_t back = std::size_t{model.lastDistance()} + 1;
    if (back <= at) return byteAt(piece.bytes, at - back);
    const std::size_t further = back - (at - piece.known);
    return further <= before.size() ? byteAt(before, before.size() - further) : 0;
  }

  // A match of one byte is only one where it was last copied from.
  LzmaSymbol asHere(LzmaSymbol symbol, std::string_view bytes, std::size_t at) const {
    const bool isLiteral =
        symbol.length == 0 || (symbol.length == 1 && symbol.distance != model.lastDistance());
    return isLiteral ? LzmaSymbol{0, 0, byteAt(bytes, at)} : symbol;
  }

  LzmaTuning tuning;
  LzmaModel model;
  RangeWriter writer;
  std::uint64_t position = 0;
  std::string before;  ///< the last piece, as far as one may copy from
  bool isBroken = false;
};

LzmaSplicer::LzmaSplicer(const LzmaTuning& tuning, LzmaSink sink)
    : stream_(std::make_unique<Stream>(tuning, std::move(sink))) {
  RangeWriter& out = stream_->writer;
  out.put(static_cast<unsigned char>((tuning.positionBits * 5 + tuning.literalPositionBits) * 9 +
                                     tuning.literalContextBits));
  for (int i = 0; i < 4; ++i) out.put(static_cast<unsigned char>(tuning.dictionary >> (8 * i)));
  for (int i = 0; i < 8; ++i) out.put(0xFF);  // the length is not stored
}

LzmaSplicer::~LzmaSplicer() = default;

bool LzmaSplicer::add(const LzmaPiece& piece, LzmaSource packed, const LzmaWatch& watch) {
  Stream& to = *stream_;
  const std::string_view bytes = piece.bytes;
  LzmaModel from(to.tuning);
  RangeReader reader(std::move(packed));
  std::size_t watched = piece.known;
  for (std::size_t at = piece.known; at < bytes.size() && !to.isBroken;) {
    const unsigned char before = at > 0 ? byteAt(bytes, at - 1) : 0;
    const std::size_t back = std::size_t{from.lastDistance()} + 1;
    const LzmaSymbol read =
        from.code(reader, at, before, back <= at ? byteAt(bytes, at - back) : 0, LzmaSymbol{});
    const LzmaSymbol symbol = to.asHere(read, bytes, at);
    const std::size_t length = std::max<std::size_t>(symbol.length, 1);
    to.isBroken = reader.isCutShort() || !isIn(bytes, at, read) || to.writer.hasFailed();
    if (to.isBroken) break;
    const unsigned char last = at > 0              ? before
                               : to.before.empty() ? 0
                                                   : byteAt(to.before, to.before.size() - 1);
    to.model.code(to.writer, to.position, last, to.comparedIn(piece, at), symbol);
    at += length;
    to.position += length;
    if (at - watched >= kWatchedBlock || at == bytes.size()) {
      watch(at - watched);
      watched = at;
    }
  }
  to.before = piece.bytes;
  return !to.isBroken;
}

bool LzmaSplicer::finish() {
  Stream& to = *stream_;
  if (to.isBroken) return false;
  const unsigned char last = to.before.empty() ? 0 : byteAt(to.before, to.before.size() - 1);
  to.model.code(to.writer, to.position, last, 0, {kShortestMatch, kEndDistance, 0});
  return to.writer.finish();
}

}  // namespace quillory
