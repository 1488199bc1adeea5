#include "packager/bytes/abandoned.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = ".unfinished-";
constexpr std::size_t kLettersBehindIt = 6;

bool isUnfinishedName(const std::string& name) {
  return name.starts_with(kPrefix) && name.size() == kPrefix.size() + kLettersBehindIt &&
         std::all_of(name.begin() + kPrefix.size(), name.end(),
                     [](unsigned char c) { return std::isalnum(c) != 0; });
}

/// A descriptor of this user's own file or folder; -1 for a link, and for anything else. Nothing
/// that waits is ever opened: a pipe would.
int openOwn(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) {
    return -1;
  }
  struct stat found {};
  const bool isOwn = fstat(descriptor, &found) == 0 && found.st_uid == geteuid() &&
                     (S_ISREG(found.st_mode) || S_ISDIR(found.st_mode));
  if (isOwn) {
    return descriptor;
  }
  close(descriptor);
  return -1;
}

/// Whether the name still leads to what is open.
bool isStillThere(const std::string& path, int descriptor) {
  struct stat opened {};
  struct stat named {};
  return fstat(descriptor, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void removeIfAbandoned(const std::string& path) {
  const int descriptor = openOwn(path);
  if (descriptor < 0) {
    return;
  }
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && isStillThere(path, descriptor)) {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  close(descriptor);
}

}  // namespace

void removeAbandoned(const std::string& folder) {
  const fs::path place = folder.empty() ? "." : folder;
  std::vector<std::string> found;
  std::error_code error;
  for (fs::directory_iterator entry(place, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isUnfinishedName(entry->path().filename().string())) {
      found.push_back(entry->path().string());
    }
  }
  std::for_each(found.begin(), found.end(), removeIfAbandoned);
}

int lockUnfinished(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) {
    return -1;
  }
  // Whoever is cleaning holds it for a moment, and then it is gone.
  if (flock(descriptor, LOCK_EX) == 0 && isStillThere(path, descriptor)) {
    return descriptor;
  }
  close(descriptor);
  return -1;
}

}  // namespace quillory::pack
