// What a release list says of an archive, taken from the archive itself.
#pragma once
#include <string>

#include "formats/release_list.h"
#include "packager/reading/plain_archive.h"

namespace quillory::pack {

/// An archive, unpacked into the folder for temporary files as long as this lives.
class ArchiveFacts {
 public:
  /// Throws PackError, and DamagedArchive when it is none.
  explicit ArchiveFacts(const std::string& path);

  /// A component of that archive: lengths and hashes, without deltas and the names of people.
  ReleaseComponent component(const std::string& role, const std::string& fileName) const;
  const PlainArchive& plain() const { return plain_; }

 private:
  std::string path_;
  PlainArchive plain_;
};

}  // namespace quillory::pack
