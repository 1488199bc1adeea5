#include "support/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "support/file_modes.h"
#include "support/files.h"

namespace quillory {
namespace {

constexpr int kForWriting = O_WRONLY | O_CREAT | O_CLOEXEC;

int openFile(const char* path, NewFile::Existing existing) {
  if (existing == NewFile::Existing::kFollowed) return open(path, kForWriting | O_TRUNC, 0666);
  const unsigned mode = installationFileMode();
  if (existing == NewFile::Existing::kUnlinked) {
    removeFileOrLink(path);
    return open(path, kForWriting | O_EXCL | O_NOFOLLOW, mode);
  }
  const int descriptor = open(path, kForWriting | O_TRUNC | O_NOFOLLOW, mode);
  if (descriptor != -1 || errno != ELOOP || unlink(path) != 0) return descriptor;
  return open(path, kForWriting | O_TRUNC | O_NOFOLLOW, mode);
}

bool isPlainFile(const char* path) {
  struct stat found {};
  return lstat(path, &found) == 0 && S_ISREG(found.st_mode);
}

}  // namespace

NewFile::NewFile(std::string path, Existing existing)
    : path_(std::move(path)), existing_(existing) {
  const int descriptor = openFile(path_.c_str(), existing_);
  if (descriptor != -1) file_.reset(fdopen(descriptor, "wb"));
  isIncomplete_ = file_ != nullptr;
  if (isIncomplete_) return;
  fail(errno);
  if (descriptor != -1) ::close(descriptor);
}

NewFile::NewFile(NewFile&& other) noexcept
    : path_(std::move(other.path_)),
      existing_(other.existing_),
      file_(std::move(other.file_)),
      isIncomplete_(std::exchange(other.isIncomplete_, false)),
      error_(other.error_) {}

NewFile::~NewFile() {
  file_.reset();
  if (isIncomplete_ && existing_ != Existing::kFollowed && isPlainFile(path_.c_str()))
    unlink(path_.c_str());
}

bool NewFile::fail(int error) {
  if (error_ == 0) error_ = error;
  return false;
}

bool NewFile::write(const void* data, std::size_t size) {
  if (error_ != 0 || !isOpen()) return false;
  return std::fwrite(data, 1, size, file_.get()) == size || fail(errno);
}

bool NewFile::close() {
  if (!isOpen()) return false;
  // Of a failure that write() has not seen only the fact is known.
  if (std::ferror(file_.get()) != 0) fail(EIO);
  if (std::fclose(file_.release()) != 0) fail(errno);
  isIncomplete_ = error_ != 0;
  return !isIncomplete_;
}

}  // namespace quillory
