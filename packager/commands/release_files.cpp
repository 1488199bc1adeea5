#include "packager/commands/release_files.h"

#include <filesystem>

#include "formats/version_file_format.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

void addRelease(const std::string& folder, const std::string& name, const std::string& version,
                const std::string& archive) {
  std::filesystem::create_directories(folder);
  FileSink copy(folder + '/' + releaseArchiveName(name, version), 0666,
                Durability::kLeftToTheSystem);
  copyFileInto(copy, archive);
  copy.commit();
  writeWholeFile(folder + '/' + versionFileName(name), version + '\n', 0666,
                 Durability::kLeftToTheSystem);
}

}  // namespace quillory::pack
