#include "support/plain_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillory {
namespace {

constexpr std::size_t kChunk = 64 * 1024;

bool isPlain(int descriptor) {
  struct stat info;
  if (fstat(descriptor, &info) != 0) return false;
  errno = EINVAL;
  return S_ISREG(info.st_mode);
}

}  // namespace

OwnedFile openPlainFile(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  OwnedFile file(isPlain(descriptor) ? fdopen(descriptor, "rb") : nullptr);
  if (!file) {
    const int why = errno;
    close(descriptor);
    errno = why;
  }
  return file;
}

std::optional<std::string> readPlainFile(const std::string& path, std::size_t most) {
  const OwnedFile file = openPlainFile(path);
  if (!file) return std::nullopt;
  std::string bytes;
  while (bytes.size() < most) {
    const std::size_t before = bytes.size();
    bytes.resize(before + std::min(kChunk, most - before));
    bytes.resize(before + std::fread(bytes.data() + before, 1, bytes.size() - before, file.get()));
    if (bytes.size() == before) break;
  }
  if (std::ferror(file.get()) != 0) return std::nullopt;
  return bytes;
}

}  // namespace quillory
