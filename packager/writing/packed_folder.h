// A folder in one file for people to download: a .zip or a .tar.xz, with modes and links, and the
// same bytes whoever packs it and when.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

struct PackedEntry {
  std::string path;    ///< there
  std::string source;  ///< a file, or a folder with everything in it; "" for `bytes`
  std::string bytes{};
  unsigned mode = 0644;  ///< of `bytes`
};

enum class PackedFormat { kZip, kTarXz };

/// Writes `output`, which appears when it is whole. Folders are packed in the order of their names;
/// of modes only the permissions count, users and times do not. Throws PackError.
void writePackedFolder(PackedFormat format, const std::vector<PackedEntry>& entries,
                       const std::string& output);

}  // namespace quillory::pack
