// Writes the wrapper tail: the records that configure the launcher, with the embedded archives
// behind them. docs/formats/wrapper-tail.md has the bytes.
#pragma once
#include <string>

#include "formats/tail_format.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

/// The records alone, without the marker. Throws PackError when a text does not fit its record.
void writeTailRecords(ByteSink& sink, const TailRecords& tail);

/// An entry of the tail. No source: an empty entry, which the launcher reads and skips.
struct TailEntry {
  std::string path;
  std::string source;
};

/// Throws PackError when the source is gone, or changes while it is read.
void writeTailEntry(ByteSink& sink, const TailEntry& entry);

/// What has to stand between an executable and the marker: a byte where the end of the executable
/// looks like a beginning of the marker, which the launcher's search would not see then; else "".
std::string guardBeforeMarker(const std::string& executable);

}  // namespace quillory::pack
