#include "packager/bytes/pipelined_sink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

TEST(PipelinedSink, HandsOverEverythingInOrder) {
  StringSink end;
  std::string expected;
  {
    PipelinedSink pipe(end);
    for (int i = 0; i < 200000; ++i) {
      const std::string piece = std::to_string(i) + ',';
      pipe.write(piece);
      expected += piece;
    }
    pipe.finish();
  }
  EXPECT_EQ(end.bytes(), expected);
}

TEST(PipelinedSink, TakesNothingAtAll) {
  StringSink end;
  PipelinedSink pipe(end);
  pipe.finish();
  EXPECT_EQ(end.bytes(), "");
}

class FailingSink : public ByteSink {
 public:
  void write(std::string_view) override { throw PackError("the disk is full"); }
};

TEST(PipelinedSink, ThrowsWhatTheNextSinkThrewAndDoesNotHang) {
  FailingSink end;
  PipelinedSink pipe(end);
  const std::string block(100000, 'x');
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i) {
          pipe.write(block);
        }
      },
      PackError);
  PipelinedSink atTheEnd(end);
  atTheEnd.write("x");
  EXPECT_THROW(atTheEnd.finish(), PackError);
}

TEST(PipelinedSink, CanBeLeftInTheMiddle) {
  const std::string block(1000000, 'x');
  StringSink end;
  {
    PipelinedSink pipe(end);
    pipe.write(block);
    pipe.write("the rest");
  }
  // The block may have come through before, but nothing is sent after it.
  EXPECT_TRUE(end.bytes().empty() || end.bytes() == block) << end.bytes().size();
}

// Takes nothing until it is opened, or until it has waited for `limit`.
class Gate : public ByteSink {
 public:
  explicit Gate(std::chrono::milliseconds limit) : limit_(limit) {}
  void write(std::string_view bytes) override {
    std::unique_lock lock(mutex_);
    entered_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, limit_, [this] { return open_; });
    open_ = true;
    count_ += bytes.size();
  }
  void waitUntilEntered() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return entered_; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  std::size_t count() const { return count_; }

 private:
  std::chrono::milliseconds limit_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool entered_ = false;
  bool open_ = false;
  std::size_t count_ = 0;
};

constexpr std::size_t kBlock = 1000000;
constexpr std::size_t kManyBlocks = 100;

TEST(PipelinedSink, WaitsWhileTooMuchIsOnItsWay) {
  std::atomic<std::size_t> accepted = 0;
  std::size_t acceptedBehindTheGate = 0;
  // Whoever wrote on without waiting would be through with everything long before the gate opens.
  struct Watch : Gate {
    Watch(const std::atomic<std::size_t>& source, std::size_t& seen)
        : Gate(std::chrono::milliseconds(300)), source_(source), seen_(seen) {}
    void write(std::string_view bytes) override {
      Gate::write(bytes);
      if (seen_ == 0) {
        seen_ = source_;
      }
    }
    const std::atomic<std::size_t>& source_;
    std::size_t& seen_;
  } end(accepted, acceptedBehindTheGate);
  const std::string block(kBlock, 'x');
  PipelinedSink pipe(end);
  for (std::size_t i = 0; i < kManyBlocks; ++i) {
    pipe.write(block);
    ++accepted;
  }
  pipe.finish();
  EXPECT_LE(acceptedBehindTheGate, 10u);
  EXPECT_EQ(end.count(), kManyBlocks * kBlock);
}

TEST(PipelinedSink, DropsWhatHasNotReachedTheNextSinkWhenItIsLeft) {
  // It is left while the first of nine blocks is held up; the others would come right behind it.
  Gate end(std::chrono::milliseconds(200));
  auto pipe = std::make_unique<PipelinedSink>(end);
  const std::string block(kBlock, 'x');
  pipe->write(block);
  end.waitUntilEntered();
  for (int i = 0; i < 8; ++i) {
    pipe->write(block);
  }
  pipe.reset();
  EXPECT_EQ(end.count(), kBlock);
}

TEST(PipelinedSink, ThrowsTheFailureOnceMoreAtTheEnd) {
  FailingSink end;
  PipelinedSink pipe(end);
  pipe.write(std::string(kBlock, 'x'));
  EXPECT_THROW(pipe.finish(), PackError);
}

}  // namespace
}  // namespace quillory::pack
