#include "packager/reading/launch_file_view.h"

#include <string>
#include <variant>
#include <vector>

namespace quillory::pack {
namespace {

// Reads one record into `file`, of the kind that its place has.
struct ValueReader {
  RecordInput& input;
  const LaunchFileRecord& record;
  LaunchFile& file;

  void operator()(int LaunchFile::*place) const {
    file.*place = static_cast<int>(input.number(record.name));
  }
  void operator()(bool LaunchFile::*place) const { file.*place = input.boolean(record.name); }
  void operator()(std::string LaunchFile::*place) const { file.*place = input.text(record.name); }
  void operator()(std::vector<std::string> LaunchFile::*place) const {
    const std::int64_t count = input.number(record.name);
    for (std::int64_t i = 0; i < count && !input.atEnd(); ++i) {
      (file.*place).push_back(input.text(record.entryName));
    }
  }
};

}  // namespace

LaunchFile readLaunchFile(RecordInput& input, std::string_view last) {
  LaunchFile file;
  for (const LaunchFileRecord& record : kLaunchFileRecords) {
    if (file.version < record.sinceVersion && record.sinceVersion > 1) {
      break;
    }
    std::visit(ValueReader{input, record, file}, record.value);
    if (record.name == last) {
      break;
    }
  }
  return file;
}

}  // namespace quillory::pack
