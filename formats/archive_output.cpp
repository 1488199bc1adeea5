#include "formats/archive_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "formats/record_stream.h"
#include "support/files.h"
#include "support/paths.h"

namespace quillory {
namespace {

bool hasParentComponent(std::string_view path) {
  while (true) {
    const std::size_t slash = path.find('/');
    if (path.substr(0, slash) == "..") return true;
    if (slash == std::string_view::npos) return false;
    path.remove_prefix(slash + 1);
  }
}

bool isOpenFolderOfOurs(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
         (found.st_mode & S_IRWXU) == S_IRWXU;
}

}  // namespace

const char* whyRefused(std::string_view destDir, std::string_view entryPath,
                       std::size_t suffixLength) {
  if (hasParentComponent(entryPath)) return "it leaves the destination folder";
  // A value that fills its record may be the beginning of a longer one.
  if (entryPath.size() >= static_cast<std::size_t>(kDefaultCapacity) - 1) return "it is too long";
  const std::size_t joined = destDir.size() + 1 + entryPath.size() + suffixLength;
  return joined < kPathCapacity ? nullptr : "it is too long";
}

std::string pathBelow(const char* destDir, const std::string& entryPath) {
  std::array<char, kPathCapacity> path;
  return setPath(path.data(), destDir, entryPath.c_str());
}

void createParents(const char* destDir, const std::string& entryPath) {
  const std::string base = pathBelow(destDir, "");
  for (std::size_t slash = entryPath.find('/'); slash != std::string::npos;
       slash = entryPath.find('/', slash + 1)) {
    createFolder(base + entryPath.substr(0, slash));
  }
}

void createFolder(const std::string& path) {
  // Asked for every folder above every file: one look where there is nothing to be done.
  if (isOpenFolderOfOurs(path)) return;
  removeFileOrLink(path);
  makeDir(path.c_str());
}

}  // namespace quillory
