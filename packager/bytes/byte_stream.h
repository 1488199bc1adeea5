// Bytes that one thread makes and another one reads meanwhile.
#pragma once
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace quillory::pack {

class ByteStream {
 public:
  void append(std::string_view bytes);
  /// Says that no more are to come. Whoever appends says it, also when something has gone wrong.
  void end();

  /// The next bytes that have not been read, waited for where there are none yet; none at the end.
  /// They stay until the next call. By one thread.
  std::string_view read();

  /// Everything, read or not. Once it has ended.
  const std::string& all() const { return bytes_; }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string bytes_;
  bool hasEnded_ = false;
  std::string block_;  // the reader's
  std::size_t read_ = 0;
};

}  // namespace quillory::pack
