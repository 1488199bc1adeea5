#include "packager/bytes/piecewise_lzma_sink.h"

#include <algorithm>
#include <utility>

#include "packager/bytes/byte_stream.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

class StreamSink : public ByteSink {
 public:
  explicit StreamSink(ByteStream& stream) : stream_(stream) {}
  void write(std::string_view bytes) override { stream_.append(bytes); }

 private:
  ByteStream& stream_;
};

// The one who reads it would wait for ever.
class EndOfStream {
 public:
  explicit EndOfStream(ByteStream& stream) : stream_(stream) {}
  ~EndOfStream() { stream_.end(); }
  EndOfStream(const EndOfStream&) = delete;
  EndOfStream& operator=(const EndOfStream&) = delete;

 private:
  ByteStream& stream_;
};

}  // namespace

struct PiecewiseLzmaSink::Piece {
  std::size_t number;
  LzmaPiece content;
  PieceSlots::Token held;
  ByteStream packed{};
  std::future<void> compressing{};  // waited for at the end: it works on what is above
};

PiecewiseLzmaSink::PiecewiseLzmaSink(int level, ByteSink& next, const LzmaTuning& tuning,
                                     std::vector<LzmaCut> cuts, PieceSlots& slots, PieceWatch watch,
                                     PieceStore store)
    : level_(level),
      tuning_(tuning),
      cuts_(std::move(cuts)),
      slots_(slots),
      watch_(std::move(watch)),
      store_(std::move(store)),
      splicer_(tuning,
               [&next](const unsigned char* data, std::size_t size) {
                 next.write({reinterpret_cast<const char*>(data), size});
                 return true;
               }),
      splicing_(std::async(std::launch::async, [this] { splice(); })) {}

PiecewiseLzmaSink::~PiecewiseLzmaSink() {
  {
    const std::lock_guard lock(mutex_);
    hasFailed_ = hasFailed_ || !hasEnded_;
  }
  noMore();
}

void PiecewiseLzmaSink::write(std::string_view bytes) {
  watch_(cut_, 0);
  while (!bytes.empty()) {
    const bool isLast = cut_ == cuts_.size();
    const std::uint64_t left = isLast ? bytes.size() : cuts_[cut_].start - taken_;
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size()));
    collected_.bytes.append(bytes.substr(0, size));
    taken_ += size;
    bytes.remove_prefix(size);
    if (!isLast && size == left) {
      cut(cuts_[cut_]);
      ++cut_;
    }
  }
}

void PiecewiseLzmaSink::cut(const LzmaCut& at) {
  LzmaPiece next;
  next.known = std::min(at.known, collected_.bytes.size()) / kCutAlignment * kCutAlignment;
  next.bytes = collected_.bytes.substr(collected_.bytes.size() - next.known);
  next.reach = at.reach;
  auto held = slots_.hold();
  std::unique_ptr<Piece> piece(
      new Piece{cut_, std::exchange(collected_, std::move(next)), std::move(held)});
  piece->compressing =
      std::async(std::launch::async, [this, one = piece.get()] { compress(*one); });
  {
    const std::lock_guard lock(mutex_);
    if (!hasFailed_) {
      cutOff_.push_back(std::move(piece));
      changed_.notify_all();
      return;
    }
  }
  splicing_.get();  // throws
}

void PiecewiseLzmaSink::tell(std::size_t piece, std::size_t bytes) {
  watch_(piece, bytes);
  const std::lock_guard lock(mutex_);
  if (hasFailed_) {
    throw PackError("compressing was given up");  // for another reason, which was told
  }
}

void PiecewiseLzmaSink::compress(Piece& piece) {
  const EndOfStream end(piece.packed);
  StreamSink packed(piece.packed);
  if (store_.fetch && store_.fetch(piece.number, piece.content, packed)) {
    return;
  }
  {
    std::size_t left = piece.content.bytes.size();
    PieceSlots::Turn turn(slots_, left);
    tell(piece.number, 0);  // whoever waited may have to stop
    const std::string error = compressPiece(
        piece.content, level_, tuning_,
        [&](const unsigned char* data, std::size_t size) {
          packed.write({reinterpret_cast<const char*>(data), size});
          return true;
        },
        [&, known = piece.content.known](std::size_t bytes) mutable {
          const std::size_t lookedThrough = std::exchange(known, 0);
          tell(piece.number, bytes + lookedThrough / kKnownShare);
          left -= bytes + lookedThrough;
          turn.pass(left);
        });
    if (!error.empty()) {
      throw PackError("compressing failed: " + error);
    }
  }
  if (store_.keep) {
    store_.keep(piece.content, piece.packed.all());
  }
}

std::unique_ptr<PiecewiseLzmaSink::Piece> PiecewiseLzmaSink::nextToSplice() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !cutOff_.empty() || hasEnded_; });
  if (cutOff_.empty() || hasFailed_) {
    return nullptr;
  }
  auto piece = std::move(cutOff_.front());
  cutOff_.pop_front();
  return piece;
}

void PiecewiseLzmaSink::spliceOne(Piece& piece) {
  const bool isWhole = splicer_.add(
      piece.content, [&] { return piece.packed.read(); },
      [&, done = std::size_t{0}](std::size_t bytes) mutable {
        const std::size_t before = std::exchange(done, done + bytes);
        watch_(piece.number, done / kSplicedShare - before / kSplicedShare);
      });
  piece.compressing.get();  // what went wrong there is why it is not
  if (!isWhole) {
    throw PackError("compressing failed: a piece of the stream is damaged");
  }
}

// The work of a thread of its own.
void PiecewiseLzmaSink::splice() {
  try {
    while (const auto piece = nextToSplice()) {
      spliceOne(*piece);
    }
  } catch (...) {
    std::deque<std::unique_ptr<Piece>> dropped;
    {
      const std::lock_guard lock(mutex_);
      hasFailed_ = true;
      dropped.swap(cutOff_);
    }
    throw;
  }
}

void PiecewiseLzmaSink::noMore() {
  const std::lock_guard lock(mutex_);
  hasEnded_ = true;
  changed_.notify_all();
}

void PiecewiseLzmaSink::finish() {
  cut({});
  noMore();
  splicing_.get();
  if (!splicer_.finish()) {
    throw PackError("compressing failed");
  }
}

}  // namespace quillory::pack
