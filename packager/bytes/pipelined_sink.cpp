#include "packager/bytes/pipelined_sink.h"

#include <utility>

namespace quillory::pack {
namespace {

constexpr std::size_t kBlock = 256 * 1024;
constexpr std::size_t kMostWaiting = 8;

}  // namespace

PipelinedSink::PipelinedSink(ByteSink& next) : next_(next), worker_([this] { run(); }) {}

PipelinedSink::~PipelinedSink() { stop(true); }

void PipelinedSink::write(std::string_view bytes) {
  collected_.append(bytes);
  if (collected_.size() >= kBlock) {
    handOver();
  }
}

void PipelinedSink::handOver() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return waiting_.size() < kMostWaiting || failure_; });
  if (failure_) {
    std::rethrow_exception(failure_);
  }
  waiting_.push_back(std::exchange(collected_, {}));
  changed_.notify_all();
}

void PipelinedSink::finish() {
  if (!collected_.empty()) {
    handOver();
  }
  stop(false);
  if (failure_) {
    std::rethrow_exception(failure_);
  }
}

void PipelinedSink::stop(bool dropRest) {
  if (!worker_.joinable()) {
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    if (dropRest) {
      waiting_.clear();
    }
    changed_.notify_all();
  }
  worker_.join();
}

void PipelinedSink::run() {
  for (;;) {
    std::string block;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return !waiting_.empty() || ended_; });
      if (waiting_.empty()) {
        return;
      }
      block = std::move(waiting_.front());
      waiting_.pop_front();
      changed_.notify_all();
    }
    try {
      next_.write(block);
    } catch (...) {
      const std::lock_guard lock(mutex_);
      failure_ = std::current_exception();
      waiting_.clear();
      changed_.notify_all();
      return;
    }
  }
}

}  // namespace quillory::pack
