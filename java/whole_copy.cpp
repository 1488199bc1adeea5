#include "java/whole_copy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "support/folder_listing.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

bool copyContent(std::FILE* source, OutputFile& copy) {
  std::vector<char> block(kBlockBytes);
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), source))
    if (!copy.write(block.data(), count)) return false;
  return std::ferror(source) == 0 && copy.stream() != nullptr && std::fflush(copy.stream()) == 0;
}

}  // namespace

bool copyWhole(const std::string& source, OutputFile& copy, const std::string& target) {
  logMessage("[Extractor] Copying FILE %s\n", target.c_str());
  const OwnedFile from(std::fopen(source.c_str(), "rb"));
  if (from == nullptr) {
    logMessage("[Extractor] *************************** Unable to open source file for copy %s\n",
               source.c_str());
    return false;
  }
  if (copyContent(from.get(), copy) && copy.commit()) return true;
  logMessage(
      "[Extractor] *************************** Unable to open destination file for copy %s\n",
      target.c_str());
  return false;
}

void removeUnfinishedCopies(const std::string& folder) {
  struct stat found {};
  if (lstat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) return;
  for (const std::string& name : namesIn(folder)) {
    // The second is what versions before this one called theirs.
    if (!name.starts_with(".unfinished-") && !name.starts_with(".java-")) continue;
    const std::string path = joinPath(folder, name);
    if (lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode)) unlink(path.c_str());
  }
}

}  // namespace quillory
