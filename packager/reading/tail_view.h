// A wrapper tail as it lies in a bundle, read for people.
#pragma once
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "packager/keys/public_key.h"
#include "packager/reading/archive_listing.h"
#include "packager/reading/plain_archive.h"

namespace quillory::pack {

struct TailView {
  std::string file;
  bool inExecutable = false;
  std::vector<std::pair<std::string, std::string>> records;  ///< names and values, in order
  std::vector<ListedEntry> entries;

  const std::string& record(const std::string& name) const;
  bool carriesRuntime() const { return !record("JRE Version").empty(); }
  bool carriesApplication() const { return !record("App Version").empty(); }
  bool carriesUpdater() const { return !record("GU Version").empty(); }
  /// The key of its archives; none when the record is empty. Throws PackError when it is no key.
  std::optional<PublicKey> key() const;

  // The archive of each part, by its place among the entries; null when there is none.
  const ListedEntry* updaterArchive() const;
  const ListedEntry* runtimeArchive() const;
  const ListedEntry* applicationArchive() const;

  FileRegion regionOf(const ListedEntry& entry) const;
};

/// Reads a tail that begins at the file's first byte, or behind the marker when `inExecutable`.
/// None when there is no marker.
std::optional<TailView> readTail(const std::string& path, bool inExecutable, Findings& findings);

/// Whether the launcher decompresses an entry, and whether it extracts it as an archive.
bool isCompressed(const ListedEntry& entry);
bool isArchive(const ListedEntry& entry);

}  // namespace quillory::pack
