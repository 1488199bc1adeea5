#include "packager/writing/launch_file_writer.h"

#include <variant>
#include <vector>

#include "packager/writing/record_writer.h"

namespace quillory::pack {
namespace {

// Writes one record of `file`, of the kind that its place has.
struct ValueWriter {
  RecordWriter& records;
  const LaunchFileRecord& record;
  const LaunchFile& file;

  void operator()(int LaunchFile::*place) const { records.number(record.name, file.*place); }
  void operator()(bool LaunchFile::*place) const { records.boolean(record.name, file.*place); }
  void operator()(std::string LaunchFile::*place) const { records.text(record.name, file.*place); }
  void operator()(std::vector<std::string> LaunchFile::*place) const {
    records.number(record.name, static_cast<std::int64_t>((file.*place).size()));
    for (const std::string& entry : file.*place) {
      records.text(record.entryName, entry);
    }
  }
};

}  // namespace

void writeLaunchFile(ByteSink& sink, const LaunchFile& file) {
  LaunchFile newest = file;
  newest.version = kLaunchFileVersion;
  RecordWriter records(sink);
  for (const LaunchFileRecord& record : kLaunchFileRecords) {
    std::visit(ValueWriter{records, record, newest}, record.value);
  }
}

std::string launchFileBytes(const LaunchFile& file) {
  StringSink bytes;
  writeLaunchFile(bytes, file);
  return bytes.bytes();
}

}  // namespace quillory::pack
