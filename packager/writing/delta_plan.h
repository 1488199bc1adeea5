// What a delta takes from the older archive and what it has to bring: decided from two plain
// archives, before anything is compressed. docs/formats/delta.md has what becomes of it.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/delta_header.h"

namespace quillory::pack {

/// A file of the older archive, and where in it its content stands.
struct PlannedBase {
  BaseFile file;
  std::int64_t contentAt = 0;
};

/// A file that need not be brought, and where in the newer archive its content stands.
struct PlannedCopy {
  BaseFile file;  ///< of the older archive
  std::int64_t contentAt = 0;
};

struct DeltaPlan {
  std::vector<PlannedBase> dictionary;  ///< in the order of the older archive
  std::vector<PlannedCopy> copies;      ///< in the order of the newer archive
  std::int64_t dictionaryLength = 0;
  std::int64_t streamLength = 0;  ///< bytes of the newer archive that are no copies

  /// The memory of the stream: all of it can be copied from anywhere before it.
  std::int64_t window() const;
};

/// Files below this length are not worth their records in the header.
inline constexpr std::int64_t kWorthNaming = 512;

/// Compares the archives at the two paths, which are plain. Unchanged files are copied, whatever
/// their names have become; all others of the older archive are the dictionary, because in them is
/// what the changed ones were made from. Nothing counts that is not installed as it lies in the
/// archive: see isInstalledAsPacked(). When the window exceeds `mostMemory`, only those stay in the
/// dictionary whose path the newer archive has, too; it may exceed it all the same. Files below
/// `worthNaming` are left alone. Throws PackError when one of the archives cannot be read.
DeltaPlan planDelta(const std::string& oldArchive, const std::string& newArchive,
                    std::string_view role, std::int64_t mostMemory,
                    std::int64_t worthNaming = kWorthNaming);

/// Whether the file of a component of that role (formats/release_list_format.h) has the content in
/// an installation that it has in its archive. Of a runtime, the launcher replaces the trust store
/// and makes the program of its bundle a link, and the JVM may renew its archives of classes.
bool isInstalledAsPacked(std::string_view role, std::string_view path);

}  // namespace quillory::pack
