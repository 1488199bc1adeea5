#include "packager/writing/tail_writer.h"

#include "formats/marker_search.h"
#include "formats/markers.h"
#include "packager/reading/plain_archive.h"
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
  const auto size = static_cast<std::uint64_t>(wholeFile(entry.source).length);
  writeFileEntryHeader(sink, entry.path, size);
  if (copyFileInto(sink, entry.source) != size) {
    throw PackError("the file changed while it was packed", "pack again when it is at rest",
                    {entry.source, 0});
  }
}

std::string guardBeforeMarker(const std::string& executable) {
  MarkerSearch search(tailMarker());
  readRegion(wholeFile(executable), [&search](std::string_view block) { search.take(block); });
  return search.isInsideMatch() ? "\xFF" : "";  // which the marker does not hold
}

}  // namespace quillory::pack
