#include "packager/content/content_copy.h"

#include <filesystem>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

namespace fs = std::filesystem;

void copyContent(const ContentTree& tree, const std::string& folder) {
  try {
    fs::create_directories(folder);
    for (const auto& [path, entry] : tree.entries()) {
      const fs::path place = fs::path(folder) / path;
      fs::create_directories(entry.kind == ContentEntry::Kind::kFolder ? place
                                                                       : place.parent_path());
      if (entry.kind == ContentEntry::Kind::kFile) {
        fs::copy_file(entry.source, place);
      } else if (entry.kind == ContentEntry::Kind::kBytes) {
        writeWholeFile(place.string(), entry.bytes, 0666, Durability::kLeftToTheSystem);
      }
    }
  } catch (const fs::filesystem_error& e) {
    throw PackError("cannot be copied: " + e.code().message(), "", {e.path1().string(), 0});
  }
}

}  // namespace quillory::pack
