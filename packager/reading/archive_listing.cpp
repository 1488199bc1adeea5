#include "packager/reading/archive_listing.h"

#include <cstdlib>
#include <utility>

#include "formats/archive_output.h"

namespace quillory::pack {
namespace {

// Stands for the destination in the launcher's own test of paths; any absolute one does.
constexpr char kSomeFolder[] = "/folder";

void checkEntry(const ListedEntry& entry, RecordInput& input, Findings& findings,
                const std::string& path) {
  const std::size_t suffix = entry.type == kPack200Type ? kArchiveSuffix.size() : 0;
  if (const char* why = whyRefused(kSomeFolder, entry.path, suffix)) {
    findings.push_back({Severity::kError,
                        "path",
                        "the launcher refuses the entry \"" + entry.path + "\": " + why,
                        {path, 0},
                        ""});
  }
  if (entry.length < 0) {
    findings.push_back({Severity::kError,
                        "length",
                        "the entry \"" + entry.path + "\" has a negative length",
                        {path, 0},
                        ""});
  } else if (entry.length > input.size() - entry.contentAt) {
    findings.push_back({Severity::kError,
                        "cut-short",
                        "the file ends inside \"" + entry.path +
                            "\": the launcher would wait for the rest for ever",
                        {path, 0},
                        "copy or download it again"});
  }
}

}  // namespace

const ListedEntry* ArchiveListing::find(const std::string& path) const {
  for (const ListedEntry& entry : entries) {
    if (entry.path == path) {
      return &entry;
    }
  }
  return nullptr;
}

std::optional<ListedEntry> readListedEntry(RecordInput& input, Findings& findings,
                                           const std::string& path) {
  const std::string type = input.text(kEntryTypeRecord);
  if (type.empty()) {
    return std::nullopt;
  }
  ListedEntry entry;
  entry.type = std::strtol(type.c_str(), nullptr, 10);
  entry.path = input.text(kEntryPathRecord);
  if (entry.type != kFolderType) {
    entry.length = input.number(kEntryLengthRecord);
  }
  entry.contentAt = input.position();
  if (entry.path == kSignatureBlockPath && entry.length != 0) {
    return entry;
  }
  checkEntry(entry, input, findings, path);
  const std::int64_t rest = input.size() - entry.contentAt;
  input.seek(entry.contentAt + std::max<std::int64_t>(0, std::min(entry.length, rest)));
  return entry;
}

ArchiveListing listArchive(RecordInput& input, Findings& findings, const std::string& path) {
  ArchiveListing listing;
  for (;;) {
    const std::int64_t start = input.position();
    const std::optional<ListedEntry> entry = readListedEntry(input, findings, path);
    if (!entry) {
      break;
    }
    if (entry->path == kSignatureBlockPath && entry->length != 0) {
      ListedSignature signature;
      signature.offset = start;
      signature.claimedOffset = input.number(kSignaturePlaceRecord);
      signature.hex = input.text(kSignatureHexRecord, kSignatureHexCapacity);
      listing.signature = std::move(signature);
      break;
    }
    const bool isFirst = listing.entries.empty() && !listing.identity;
    if (isFirst && entry->type == kFileEntry && entry->length == 0) {
      listing.identity = parseIdentityPath(entry->path);
      if (listing.identity) {
        continue;
      }
    }
    listing.entries.push_back(*entry);
    if (hasErrors(findings)) {
      break;  // what follows would be read from the wrong place
    }
  }
  listing.end = input.position();
  return listing;
}

}  // namespace quillory::pack
