// A wrapper tail as it lies in a bundle, read for people.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "formats/tail_format.h"
#include "packager/keys/public_key.h"
#include "packager/reading/archive_listing.h"
#include "packager/reading/plain_archive.h"

namespace quillory::pack {

struct TailView {
  std::string file;
  bool inExecutable = false;
  TailRecords records;
  std::vector<ListedEntry> entries;

  bool carriesRuntime() const { return !records.jreVersion.empty(); }
  bool carriesApplication() const { return !records.appVersion.empty(); }
  bool carriesUpdater() const { return !records.guVersion.empty(); }
  /// The key of its archives; none when the record is empty. Throws PackError when it is no key.
  std::optional<PublicKey> key() const;

  // The archive of each part, by its place among the entries; null when there is none.
  const ListedEntry* updaterArchive() const;
  const ListedEntry* runtimeArchive() const;
  const ListedEntry* applicationArchive() const;

  /// Where the content of one of `entries` lies.
  FileRegion regionOf(const ListedEntry& entry) const;
};

/// Reads a tail that begins at the file's first byte, or behind the marker when `inExecutable`.
/// None when there is no marker.
std::optional<TailView> readTail(const std::string& path, bool inExecutable, Findings& findings);

/// Whether the launcher decompresses an entry, and whether it extracts it as an archive.
bool isCompressed(const ListedEntry& entry);
bool isArchive(const ListedEntry& entry);

}  // namespace quillory::pack
