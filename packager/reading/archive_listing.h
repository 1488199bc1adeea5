// What is in an archive, without extracting it.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/archive_format.h"
#include "formats/archive_identity.h"
#include "packager/reading/record_input.h"

namespace quillory::pack {

struct ListedEntry {
  std::int64_t type = kFileEntry;
  std::string path;
  std::int64_t length = 0;
  std::int64_t contentAt = 0;  ///< where the content begins in the file
};

inline constexpr std::int64_t kFolderType = kFolderEntry;
inline constexpr std::int64_t kPack200Type = kPack200Entry;

struct ListedSignature {
  std::int64_t offset = 0;         ///< where the block stands
  std::int64_t claimedOffset = 0;  ///< where it says that it stands
  std::string hex;
};

struct ArchiveListing {
  /// What its first entry says that it is; not among the entries then.
  std::optional<ArchiveIdentity> identity;
  std::vector<ListedEntry> entries;
  std::optional<ListedSignature> signature;
  std::int64_t end = 0;  ///< the first byte behind the archive

  /// The first entry of that path; null when there is none. It lives as long as the listing.
  const ListedEntry* find(const std::string& path) const;
};

/// The entry at which `input` stands, leaving it behind the content; none at the end of the
/// archive. Findings tell what the launcher would refuse or wait for.
std::optional<ListedEntry> readListedEntry(RecordInput& input, Findings& findings,
                                           const std::string& path);

/// All entries from where `input` stands to the end of the archive: its last record, or the end of
/// the file. `path` is how findings name it.
ArchiveListing listArchive(RecordInput& input, Findings& findings, const std::string& path);

}  // namespace quillory::pack
