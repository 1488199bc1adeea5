#include "packager/tail_writer.h"

#include <algorithm>
#include <filesystem>

#include "formats/markers.h"
#include "packager/archive_writer.h"
#include "packager/findings.h"
#include "packager/record_input.h"
#include "packager/record_writer.h"
#include "support/owned.h"

namespace quillory::pack {

void writeTailRecords(ByteSink& sink, const TailRecords& tail) {
  RecordWriter records(sink);
  records.text("App Name", tail.appName);
  records.text("App Version", tail.appVersion);
  records.text("JRE Version", tail.jreVersion);
  records.text("GU Version", tail.updaterVersion);
  records.text("Min Splash MS", tail.minSplashMillis);
  records.text("Signature Public Key", tail.publicKeyHex, kLongValueCapacity);
  records.text("Can Override Splash", tail.canOverrideSplash);
  records.text("Install Type", tail.installType);
  records.text("Silent Parameter", tail.silentParameter);
  records.text("Required Java Version", tail.requiredJava);
  records.text("Update URL", tail.updateUrl, kUpdateUrlCapacity);
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

std::string tailMarker() {
  const OwnedText marker(allocAndInitMarker());
  return {marker.get(), kTailMarkerLength};
}

}  // namespace quillory::pack
