#include "support/open_requests.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <mutex>

namespace quillory {
namespace {

std::mutex mutex;

// For good: a request may come while the process ends.
std::string& pathOfFile() {
  static auto* const path = new std::string;
  return *path;
}

}  // namespace

void passOpenRequestsTo(const std::string& path) {
  const std::lock_guard lock(mutex);
  pathOfFile() = path;
}

OpenRequest passOnOpenRequest(const char* url) {
  const std::lock_guard lock(mutex);
  if (pathOfFile().empty()) return OpenRequest::kTooEarly;
  const int file =
      open(pathOfFile().c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return OpenRequest::kUnheard;
  // In one piece, so that a reader never takes a half for the whole.
  const std::size_t length = std::strlen(url) + 1;
  const bool isWritten = write(file, url, length) == static_cast<ssize_t>(length);
  close(file);
  return isWritten ? OpenRequest::kHeard : OpenRequest::kUnheard;
}

}  // namespace quillory
