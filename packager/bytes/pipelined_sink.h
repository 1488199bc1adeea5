// Two threads in a row: what is written here reaches the next sink on a thread of its own, so that
// reading and hashing go on while the bytes before are compressed.
#pragma once
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

class PipelinedSink : public ByteSink {
 public:
  /// `next` is borrowed, and used by the other thread until finish() or the end of the scope.
  explicit PipelinedSink(ByteSink& next);
  /// Drops what has not reached the next sink yet.
  ~PipelinedSink() override;

  /// Waits while too much is on its way. Throws what the next sink threw.
  void write(std::string_view bytes) override;
  /// Waits until everything has reached the next sink. Throws what that threw.
  void finish();

 private:
  void run();
  void handOver();
  void stop(bool dropRest);

  ByteSink& next_;
  std::string collected_;  // by the writing thread, until it is worth handing over
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> waiting_;
  bool ended_ = false;
  std::exception_ptr failure_;
  std::thread worker_;
};

}  // namespace quillory::pack
