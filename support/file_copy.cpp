#include "support/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;

// Which of the two operations speaks in the log.
constexpr const char* kFolderTag = "[CopyFolder]";
constexpr const char* kFileTag = "[Extractor]";

char copyBuf[50000];

void logFailure(const char* tag, const char* what, const char* path) {
  logMessage("%s *************************** Unable to %s for copy %s\n", tag, what, path);
}

void logFailure(const char* tag, const char* what, const char* path, int reason) {
  logMessage("%s *************************** Unable to %s for copy %s (%s)\n", tag, what, path,
             std::strerror(reason));
}

// Mode "wb", but never through a link that stands at the path.
OwnedFile openTarget(const char* path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
  int descriptor = open(path, kFlags, 0666);
  if (descriptor == -1 && errno == ELOOP && unlink(path) == 0)
    descriptor = open(path, kFlags, 0666);
  if (descriptor == -1) return nullptr;
  OwnedFile file(fdopen(descriptor, "wb"));
  if (file == nullptr) close(descriptor);
  return file;
}

// A read that is shorter than the buffer is the last one.
int copyBytes(const char* tag, std::FILE* source, const char* sourcePath, OwnedFile target,
              const char* targetPath) {
  std::size_t count = 0;
  do {
    count = std::fread(copyBuf, 1, sizeof copyBuf, source);
    if (count < sizeof copyBuf && std::ferror(source) != 0) {
      logFailure(tag, "read source file", sourcePath, errno);
      return kFailed;
    }
    if (count > 0 && std::fwrite(copyBuf, 1, count, target.get()) != count) {
      logFailure(tag, "write destination file", targetPath, errno);
      return kFailed;
    }
  } while (count == sizeof copyBuf);
  // The last bytes may meet a full disk only now.
  if (std::fclose(target.release()) != 0) {
    logFailure(tag, "write destination file", targetPath, errno);
    return kFailed;
  }
  return kDone;
}

int copyOneFile(const char* tag, const char* source, const char* target) {
  logMessage("%s Copying FILE %s\n", tag, target);
  const OwnedFile from(std::fopen(source, "rb"));
  if (from == nullptr) {
    logFailure(tag, "open source file", source);
    return kFailed;
  }
  OwnedFile to = openTarget(target);
  if (to == nullptr) {
    logFailure(tag, "open destination file", target);
    return kFailed;
  }
  return copyBytes(tag, from.get(), source, std::move(to), target);
}

int copySubfolder(const char* source, const char* target) {
  logMessage("[CopyFolder] Copying DIR %s\n", target);
  const int made = makeDir(target);
  if (made != kDone) {
    logMessage(
        "[CopyFolder] *************************** Failed to copy %s to %s (could not create target "
        "folder)\n",
        source, target);
    return made;
  }
  const int copied = copyFolder(source, target);
  if (copied != kDone) {
    logMessage("[CopyFolder] *************************** Failed to copy %s to %s\n", source,
               target);
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
    const int copied = isFolder(from.c_str()) ? copySubfolder(from.c_str(), to.c_str())
                                              : copyOneFile(kFolderTag, from.c_str(), to.c_str());
    if (copied != kDone) return copied;
  }
  return kDone;
}

int copyFile(const char* source, const char* target) {
  return copyOneFile(kFileTag, source, target);
}

}  // namespace quillory
