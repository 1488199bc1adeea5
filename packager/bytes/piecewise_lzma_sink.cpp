#include "packager/bytes/piecewise_lzma_sink.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// Of known bytes, so that the positions of a piece and of the stream are aligned alike.
constexpr std::size_t kAlignment = 16;
constexpr unsigned kMostSlots = 8;

class TakenSlot {
 public:
  explicit TakenSlot(PieceSlots& slots) : slots_(slots) {}
  ~TakenSlot() { slots_.giveBack(); }
  TakenSlot(const TakenSlot&) = delete;
  TakenSlot& operator=(const TakenSlot&) = delete;

 private:
  PieceSlots& slots_;
};

}  // namespace

void PieceSlots::take() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return free_ > 0; });
  --free_;
}

void PieceSlots::giveBack() {
  const std::lock_guard lock(mutex_);
  ++free_;
  changed_.notify_one();
}

unsigned usualPieceSlots() {
  return std::min(std::max(std::thread::hardware_concurrency(), 1u) + 1, kMostSlots);
}

PiecewiseLzmaSink::PiecewiseLzmaSink(int level, ByteSink& next, const LzmaTuning& tuning,
                                     std::vector<LzmaCut> cuts, PieceSlots& slots, PieceWatch watch)
    : level_(level),
      tuning_(tuning),
      cuts_(std::move(cuts)),
      slots_(slots),
      watch_(std::move(watch)),
      splicer_(tuning, [&next](const unsigned char* data, std::size_t size) {
        next.write({reinterpret_cast<const char*>(data), size});
        return true;
      }) {}

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
      cut(cuts_[cut_].known);
      ++cut_;
    }
  }
}

void PiecewiseLzmaSink::cut(std::size_t known) {
  LzmaPiece next;
  next.known = std::min(known, collected_.bytes.size()) / kAlignment * kAlignment;
  next.bytes = collected_.bytes.substr(collected_.bytes.size() - next.known);
  slots_.take();
  auto taken = std::make_unique<TakenSlot>(slots_);
  running_.push_back(std::async(
      std::launch::async, [this, number = cut_, piece = std::exchange(collected_, std::move(next)),
                           held = std::move(taken)]() mutable {
        const auto slot = std::move(held);  // given back here, also by what the watch throws
        Compressed done{std::move(piece)};
        done.error = compressPiece(done.piece, level_, tuning_,
                                   [&](std::size_t bytes) { watch_(number, bytes); });
        return done;
      }));
  while (!running_.empty() &&
         running_.front().wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
    splice(running_.front().get());
    running_.pop_front();
  }
}

void PiecewiseLzmaSink::splice(const Compressed& done) {
  if (!done.error.empty()) {
    throw PackError("compressing failed: " + done.error);
  }
  if (!splicer_.add(done.piece)) {
    throw PackError("compressing failed: a piece of the stream is damaged");
  }
  watch_(spliced_++, (done.piece.bytes.size() - done.piece.known) / kSplicedShare);
}

void PiecewiseLzmaSink::finish() {
  cut(0);
  for (; !running_.empty(); running_.pop_front()) {
    splice(running_.front().get());
  }
  if (!splicer_.finish()) {
    throw PackError("compressing failed");
  }
}

}  // namespace quillory::pack
