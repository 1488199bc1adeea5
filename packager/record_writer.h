// Writes the values of a record stream: texts, each ended by one zero byte. The reader, with its
// limits, is formats/record_stream.h.
#pragma once
#include <cstdint>
#include <string_view>

#include "formats/record_stream.h"
#include "packager/byte_sinks.h"

namespace quillory::pack {

/// Characters that a value read with `capacity` may have: one fewer than fit, because a value that
/// fills the reader's block is cut there with a warning, even if nothing is lost.
constexpr std::size_t longestValue(int capacity) { return static_cast<std::size_t>(capacity) - 2; }

inline constexpr int kLongValueCapacity = 8192;  ///< "Signature Public Key" in the tail
inline constexpr int kUpdateUrlCapacity = 5000;
inline constexpr int kParamValueCapacity = 200000;

class RecordWriter {
 public:
  explicit RecordWriter(ByteSink& sink) : sink_(sink) {}

  /// Throws PackError, naming the record, when the value holds a zero byte or is longer than its
  /// reader takes.
  void text(std::string_view name, std::string_view value, int capacity = kDefaultCapacity);
  void number(std::string_view name, std::int64_t value);
  void boolean(std::string_view name, bool value) { number(name, value ? 1 : 0); }

 private:
  ByteSink& sink_;
};

}  // namespace quillory::pack
