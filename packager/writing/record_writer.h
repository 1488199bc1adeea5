// Writes the values of a record stream: texts, each ended by one zero byte. The reader, with its
// limits, is formats/record_stream.h.
#pragma once
#include <cstdint>
#include <string_view>

#include "formats/record_stream.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

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
