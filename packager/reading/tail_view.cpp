#include "packager/reading/tail_view.h"

#include <algorithm>

#include "formats/markers.h"

namespace quillory::pack {
namespace {

// Behind the tools and the splash picture.
constexpr std::size_t kUpdaterStart = kCompressions.size() + 1;

const ListedEntry* archiveAmong(const std::vector<ListedEntry>& entries, std::size_t first,
                                std::size_t count) {
  for (std::size_t i = first; i < std::min(first + count, entries.size()); ++i) {
    if (isArchive(entries[i]) && entries[i].length > 0) {
      return &entries[i];
    }
  }
  return nullptr;
}

}  // namespace

bool isCompressed(const ListedEntry& entry) {
  return entry.type != kFolderType && compressionOf(entry.path) != nullptr;
}

bool isArchive(const ListedEntry& entry) {
  return entry.type != kFolderType && isArchiveName(entry.path);
}

std::optional<PublicKey> TailView::key() const {
  const std::string& hex = records.signaturePublicKey;
  if (hex.empty()) {
    return std::nullopt;
  }
  return PublicKey::fromHex(hex, file);
}

const ListedEntry* TailView::updaterArchive() const {
  return carriesUpdater() ? archiveAmong(entries, kUpdaterStart, kUpdaterEntries) : nullptr;
}

const ListedEntry* TailView::runtimeArchive() const {
  return carriesRuntime() ? archiveAmong(entries, kUpdaterStart + kUpdaterEntries, 1) : nullptr;
}

const ListedEntry* TailView::applicationArchive() const {
  const std::size_t first = kUpdaterStart + kUpdaterEntries + (carriesRuntime() ? 1 : 0);
  return carriesApplication() ? archiveAmong(entries, first, kApplicationEntries) : nullptr;
}

FileRegion TailView::regionOf(const ListedEntry& entry) const {
  return {file, entry.contentAt, entry.length};
}

std::optional<TailView> readTail(const std::string& path, bool inExecutable, Findings& findings) {
  RecordInput input(path, findings);
  if (inExecutable && !input.findMarker(tailMarker())) {
    return std::nullopt;
  }
  TailView tail;
  tail.file = path;
  tail.inExecutable = inExecutable;
  for (const TailRecord& record : kTailRecords) {
    tail.records.*record.text = input.text(record.name, record.capacity);
  }
  while (!input.atEnd() && !hasErrors(findings)) {
    const std::optional<ListedEntry> entry = readListedEntry(input, findings, path);
    if (!entry) {
      break;
    }
    tail.entries.push_back(*entry);
  }
  return tail;
}

}  // namespace quillory::pack
