// An archive at hand as a plain file, decompressed when it was compressed.
#pragma once
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "packager/bytes/work_folder.h"
#include "packager/reading/archive_listing.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// Part of a file: an entry of a tail, or a whole file.
struct FileRegion {
  std::string path;
  std::int64_t offset = 0;
  std::int64_t length = 0;
};
/// All of a file. Throws PackError when its length cannot be told.
FileRegion wholeFile(const std::string& path);
/// Feeds it to `take`, block by block. Throws DamagedArchive when the file ends within it, and
/// PackError, like stopIfInterrupted(), between two blocks.
void readRegion(const FileRegion& region, const std::function<void(std::string_view)>& take);

/// An archive that cannot be decompressed or is not all there: what is wrong lies with it, and not
/// with the disk or the memory of who looks.
class DamagedArchive : public PackError {
 public:
  using PackError::PackError;
};

class PlainArchive {
 public:
  /// `compressed`: the region is an LZMA stream. Throws DamagedArchive when that is so, and
  /// PackError where it cannot be put into the folder for temporary files.
  PlainArchive(const FileRegion& region, bool compressed);

  const std::string& path() const { return path_; }
  /// Reads it through. Findings name `name`, which people know, and not a temporary file.
  ArchiveListing list(Findings& findings, const std::string& name) const;
  /// Up to `count` bytes of an entry's content.
  std::string contentOf(const ListedEntry& entry, std::size_t count) const;

 private:
  std::unique_ptr<WorkFolder> work_;
  std::string path_;
};

/// The folder for temporary files: TMPDIR or /tmp.
std::string temporaryFolder();

}  // namespace quillory::pack
