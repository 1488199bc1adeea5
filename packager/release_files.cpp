#include "packager/release_files.h"

#include <filesystem>

#include "packager/byte_sinks.h"

namespace quillory::pack {

void addRelease(const std::string& folder, const std::string& name, const std::string& version,
                const std::string& archive) {
  std::filesystem::create_directories(folder);
  const std::string stem = folder + "/Quillory-" + name;
  FileSink copy(stem + '-' + version + "-archive.p2.l2");
  copyFileInto(copy, archive);
  copy.commit();
  writeWholeFile(stem + "-version.txt", version + '\n');
}

}  // namespace quillory::pack
