#include "support/opened_files.h"

#include <mutex>
#include <utility>

#include "support/file_urls.h"
#include "support/log.h"
#include "support/open_requests.h"

namespace quillory {
namespace {

struct OpenedFiles {
  std::mutex mutex;
  std::vector<std::string> paths;
  bool areTaken = false;
};

// For good: a file may be opened while the process ends.
OpenedFiles& openedFiles() {
  static auto* const files = new OpenedFiles;
  return *files;
}

// Whether it is in time for the arguments.
bool keep(const std::string& path) {
  OpenedFiles& files = openedFiles();
  const std::lock_guard lock(files.mutex);
  if (!files.areTaken) files.paths.push_back(path);
  return !files.areTaken;
}

}  // namespace

bool openFile(const std::string& path) {
  logToSystem("[Quillory] [URL] Request received to open file %s\n", path.c_str());
  return keep(path) || passOnOpenRequest(fileUrlOf(path).c_str()) != OpenRequest::kUnheard;
}

std::vector<std::string> takeOpenedFiles() {
  OpenedFiles& files = openedFiles();
  const std::lock_guard lock(files.mutex);
  files.areTaken = true;
  return std::exchange(files.paths, {});
}

void forgetOpenedFiles() {
  OpenedFiles& files = openedFiles();
  const std::lock_guard lock(files.mutex);
  files.paths.clear();
  files.areTaken = false;
}

}  // namespace quillory
