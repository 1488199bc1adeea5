#include "support/durable.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/durable_system.h"
#include "support/log.h"

namespace quillory {
namespace {

class Opened {
 public:
  Opened(const std::string& path, int flags)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | flags)),
        error_(descriptor_ == -1 ? errno : 0) {}
  ~Opened() {
    if (descriptor_ != -1) close(descriptor_);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  int get() const { return descriptor_; }
  int error() const { return error_; }

 private:
  int descriptor_;
  int error_;
};

// Somebody may have put a pipe there: opening it must not wait for a writer.
constexpr int kFile = O_NOFOLLOW | O_NONBLOCK;
constexpr int kFolder = O_DIRECTORY;

bool tell(int error, const std::string& path) {
  if (error == 0 || isUnknownToFileSystem(error)) return true;
  logMessage("[Flush] '%s' could not be flushed to the disk: %s\n", path.c_str(),
             std::strerror(error));
  errno = error;
  return false;
}

bool openAndFlush(const std::string& path, int flags,
                  int (*flush)(int descriptor, const std::string& path)) {
  const Opened opened(path, flags);
  return tell(opened.error() != 0 ? opened.error() : flush(opened.get(), path), path);
}

int flushByDescriptor(int descriptor, const std::string&) { return flushOne(descriptor); }

}  // namespace

bool isUnknownToFileSystem(int error) {
  return error == EINVAL || error == ENOTSUP || error == EOPNOTSUPP || error == ENOSYS;
}

DurableCalls durableCalls{flushByDescriptor, flushByDescriptor, flushAll};

bool syncFile(int descriptor, const std::string& path) {
  return tell(durableCalls.flushFile(descriptor, path), path);
}

bool syncFile(const std::string& path) { return openAndFlush(path, kFile, durableCalls.flushFile); }

bool syncFolder(const std::string& folder) {
  return openAndFlush(folder, kFolder, durableCalls.flushFolder);
}

bool syncTree(const std::string& folder) {
  return openAndFlush(folder, kFolder, durableCalls.flushTree);
}

}  // namespace quillory
