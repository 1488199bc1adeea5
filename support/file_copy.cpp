#include "support/file_copy.h"

#include <fcntl.h>
#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/new_file.h"
#include "support/paths.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

// Which of the two operations speaks in the log.
constexpr const char* kFolderTag = "[CopyFolder]";
constexpr const char* kFileTag = "[Extractor]";

char copyBuf[50000];

void logFailure(const char* tag, const char* what, const std::string& path) {
  logMessage("%s *************************** Unable to %s for copy %s\n", tag, what, path.c_str());
}

void logFailure(const char* tag, const char* what, const std::string& path, int reason) {
  logMessage("%s *************************** Unable to %s for copy %s (%s)\n", tag, what,
             path.c_str(), std::strerror(reason));
}

// A read that is shorter than the buffer is the last one.
int copyBytes(const char* tag, int source, const std::string& sourcePath, NewFile& target) {
  ssize_t count = 0;
  do {
    count = readSteadily(source, copyBuf, sizeof copyBuf);
    if (count < 0) {
      logFailure(tag, "read source file", sourcePath, errno);
      return kFailed;
    }
    if (count > 0 && !target.write(copyBuf, static_cast<std::size_t>(count))) break;
  } while (count == ssize_t{sizeof copyBuf});
  if (target.close()) return kDone;
  // A short copy would be taken for the file, and fail much later for no reason that anybody finds.
  logFailure(tag, "write destination file", target.path(), target.error());
  return kFailed;
}

int copyOneFile(const char* tag, const std::string& source, const std::string& target) {
  logMessage("%s Copying FILE %s\n", tag, target.c_str());
  const OwnedDescriptor from = openSteadily(source, O_RDONLY);
  if (from.get() == -1) {
    logFailure(tag, "open source file", source);
    return kFailed;
  }
  NewFile to(target, NewFile::Existing::kRewritten);
  if (!to.isOpen()) {
    logFailure(tag, "open destination file", target);
    return kFailed;
  }
  return copyBytes(tag, from.get(), source, to);
}

int copySubfolder(const std::string& source, const std::string& target) {
  logMessage("[CopyFolder] Copying DIR %s\n", target.c_str());
  const int made = makeDir(target.c_str());
  if (made != kDone) {
    logMessage(
        "[CopyFolder] *************************** Failed to copy %s to %s (could not create target "
        "folder)\n",
        source.c_str(), target.c_str());
    return made;
  }
  const int copied = copyFolder(source.c_str(), target.c_str());
  if (copied != kDone) {
    logMessage("[CopyFolder] *************************** Failed to copy %s to %s\n", source.c_str(),
               target.c_str());
  }
  return copied;
}

}  // namespace

int copyFolder(const char* source, const char* target) {
  const auto names = listForWalk(source);
  if (!names) {
    logMessage("[CopyFolder] SourceDir from '%s' is NULL\n", source);
    return kFailed;
  }
  for (const std::string& name : *names) {
    const std::string from = joinPath(source, name);
    const std::string to = joinPath(target, name);
    const int copied = isFolder(from) ? copySubfolder(from, to) : copyOneFile(kFolderTag, from, to);
    if (copied != kDone) return copied;
  }
  return kDone;
}

int copyFile(const char* source, const char* target) {
  return copyOneFile(kFileTag, source, target);
}

}  // namespace quillory
