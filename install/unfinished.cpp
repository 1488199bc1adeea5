#include "install/unfinished.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/durable.h"
#include "support/paths.h"

namespace quillory {
namespace {

std::string markOf(const std::string& updaterFolder) {
  return joinPath(updaterFolder, ".unfinished");
}

}  // namespace

void markUnfinished(const std::string& updaterFolder) {
  // Where it cannot be made nothing can be installed either, and that will be said.
  const int mark = open(markOf(updaterFolder).c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
  if (mark >= 0) close(mark);
}

void markFinished(const std::string& updaterFolder) {
  // The names that the components have got come first: without them nothing is finished.
  syncFolder(std::filesystem::path(updaterFolder).parent_path().string());
  if (unlink(markOf(updaterFolder).c_str()) == 0) syncFolder(updaterFolder);
}

bool isUnfinished(const std::string& updaterFolder) {
  struct stat found {};
  return lstat(markOf(updaterFolder).c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

}  // namespace quillory
