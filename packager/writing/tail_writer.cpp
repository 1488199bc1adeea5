#include "packager/writing/tail_writer.h"

#include <algorithm>
#include <filesystem>

#include "formats/markers.h"
#include "packager/reading/record_input.h"
#include "packager/report/findings.h"
#include "packager/writing/archive_writer.h"
#include "packager/writing/record_writer.h"

namespace quillory::pack {

void writeTailRecords(ByteSink& sink, const TailRecords& tail) {
  RecordWriter records(sink);
  for (const TailRecord& record : kTailRecords)
    records.text(record.name, tail.*record.text, record.capacity);
}

void writeTailEntry(ByteSink& sink, const TailEntry& entry) {
  if (entry.source.empty()) {
    writeFileEntryHeader(sink, entry.path, 0);
    return;
  }
  const std::uint64_t size = std::filesystem::file_size(entry.source);
  writeFileEntryHeader(sink, entry.path, size);
  if (copyFileInto(sink, entry.source) != size) {
    throw PackError("the file changed while it was packed", "pack again when it is at rest",
                    {entry.source, 0});
  }
}

std::string guardBeforeMarker(const std::string& executable) {
  const std::string marker = tailMarker();
  Findings ignored;
  RecordInput input(executable, ignored);
  input.seek(std::max<std::int64_t>(0, input.size() - (kTailMarkerLength - 1)));
  const std::string end = input.bytes(kTailMarkerLength);
  for (std::size_t length = 1; length <= end.size(); ++length) {
    if (marker.starts_with(std::string_view(end).substr(end.size() - length))) {
      return "\xFF";  // which the marker does not hold
    }
  }
  return "";
}

}  // namespace quillory::pack
