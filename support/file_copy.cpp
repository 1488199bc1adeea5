#include "support/file_copy.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/new_file.h"
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

// A read that is shorter than the buffer is the last one.
int copyBytes(const char* tag, std::FILE* source, const char* sourcePath, NewFile& target,
              const char* targetPath) {
  std::size_t count = 0;
  do {
    count = std::fread(copyBuf, 1, sizeof copyBuf, source);
    if (count < sizeof copyBuf && std::ferror(source) != 0) {
      logFailure(tag, "read source file", sourcePath, errno);
      return kFailed;
    }
    if (count > 0 && !target.write(copyBuf, count)) break;
  } while (count == sizeof copyBuf);
  if (target.close()) return kDone;
  logFailure(tag, "write destination file", targetPath, target.error());
  return kFailed;
}

int copyOneFile(const char* tag, const char* source, const char* target) {
  logMessage("%s Copying FILE %s\n", tag, target);
  const OwnedFile from(std::fopen(source, "rb"));
  if (from == nullptr) {
    logFailure(tag, "open source file", source);
    return kFailed;
  }
  NewFile to(target, NewFile::Existing::kRewritten);
  if (!to.isOpen()) {
    logFailure(tag, "open destination file", target);
    return kFailed;
  }
  return copyBytes(tag, from.get(), source, to, target);
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
