#include "packager/tail_view.h"

#include <algorithm>

#include "packager/record_writer.h"
#include "packager/tail_writer.h"

namespace quillory::pack {
namespace {

struct RecordKind {
  const char* name;
  int capacity;
};
constexpr RecordKind kRecords[] = {{"App Name", kDefaultCapacity},
                                   {"App Version", kDefaultCapacity},
                                   {"JRE Version", kDefaultCapacity},
                                   {"GU Version", kDefaultCapacity},
                                   {"Min Splash MS", kDefaultCapacity},
                                   {"Signature Public Key", kLongValueCapacity},
                                   {"Can Override Splash", kDefaultCapacity},
                                   {"Install Type", kDefaultCapacity},
                                   {"Silent Parameter", kDefaultCapacity},
                                   {"Required Java Version", kDefaultCapacity},
                                   {"Update URL", kUpdateUrlCapacity}};

// The tool, the splash picture, three entries of the updater, then the runtime's one.
constexpr std::size_t kUpdaterStart = 2;
constexpr std::size_t kUpdaterCount = 3;
constexpr std::size_t kApplicationCount = 2;

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
  return entry.type != kFolderType && entry.path.ends_with(".l2");
}

bool isArchive(const ListedEntry& entry) {
  return entry.type != kFolderType &&
         (entry.path.ends_with(".p2") || entry.path.ends_with(".p2.l2"));
}

const std::string& TailView::record(const std::string& name) const {
  static const std::string kNone;
  for (const auto& [key, value] : records) {
    if (key == name) {
      return value;
    }
  }
  return kNone;
}

std::optional<PublicKey> TailView::key() const {
  const std::string& hex = record("Signature Public Key");
  if (hex.empty()) {
    return std::nullopt;
  }
  return PublicKey::fromHex(hex, file);
}

const ListedEntry* TailView::updaterArchive() const {
  return carriesUpdater() ? archiveAmong(entries, kUpdaterStart, kUpdaterCount) : nullptr;
}

const ListedEntry* TailView::runtimeArchive() const {
  return carriesRuntime() ? archiveAmong(entries, kUpdaterStart + kUpdaterCount, 1) : nullptr;
}

const ListedEntry* TailView::applicationArchive() const {
  const std::size_t first = kUpdaterStart + kUpdaterCount + (carriesRuntime() ? 1 : 0);
  return carriesApplication() ? archiveAmong(entries, first, kApplicationCount) : nullptr;
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
  for (const RecordKind& record : kRecords) {
    tail.records.emplace_back(record.name, input.text(record.name, record.capacity));
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
