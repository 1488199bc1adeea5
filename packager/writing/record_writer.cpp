#include "packager/writing/record_writer.h"

#include <string>

#include "packager/report/findings.h"

namespace quillory::pack {

void RecordWriter::text(std::string_view name, std::string_view value, int capacity) {
  const std::string quoted = '"' + std::string(name) + '"';
  if (value.find('\0') != std::string_view::npos) {
    throw PackError(quoted + " holds a zero byte, which would end it");
  }
  if (value.size() > longestValue(capacity)) {
    throw PackError(quoted + " has " + std::to_string(value.size()) +
                    " bytes; the launcher takes up to " + std::to_string(longestValue(capacity)));
  }
  sink_.write(value);
  sink_.write(std::string_view("\0", 1));
}

void RecordWriter::number(std::string_view name, std::int64_t value) {
  text(name, std::to_string(value), kNumberCapacity);
}

}  // namespace quillory::pack
