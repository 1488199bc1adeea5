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

constexpr mode_t kAllModeBits = 07777;
constexpr int kForWriting = O_WRONLY | O_CREAT;

OwnedDescriptor openFile(const std::string& path, NewFile::Existing existing) {
  if (existing == NewFile::Existing::kFollowed)
    return openSteadily(path, kForWriting | O_TRUNC, 0666);
  const auto mode = static_cast<mode_t>(installationFileMode());
  if (existing == NewFile::Existing::kUnlinked) {
    OwnedDescriptor fresh = openSteadily(path, kForWriting | O_EXCL | O_NOFOLLOW, mode);
    if (fresh.get() != -1 || errno != EEXIST) return fresh;
    removeFileOrLink(path);
    return openSteadily(path, kForWriting | O_EXCL | O_NOFOLLOW, mode);
  }
  OwnedDescriptor rewritten = openSteadily(path, kForWriting | O_TRUNC | O_NOFOLLOW, mode);
  if (rewritten.get() != -1 || errno != ELOOP || unlink(path.c_str()) != 0) return rewritten;
  return openSteadily(path, kForWriting | O_TRUNC | O_NOFOLLOW, mode);
}

bool isPlainFile(const char* path) {
  struct stat found {};
  return lstat(path, &found) == 0 && S_ISREG(found.st_mode);
}

}  // namespace

NewFile::NewFile(std::string path, Existing existing)
    : path_(std::move(path)), existing_(existing) {
  file_ = SteadyWriter(openFile(path_, existing_));
  isIncomplete_ = file_.isOpen();
  if (!isIncomplete_) fail(errno);
}

NewFile::NewFile(NewFile&& other) noexcept
    : path_(std::move(other.path_)),
      existing_(other.existing_),
      file_(std::move(other.file_)),
      stream_(std::move(other.stream_)),
      isIncomplete_(std::exchange(other.isIncomplete_, false)),
      error_(other.error_) {}

NewFile::~NewFile() {
  stream_.reset();
  file_ = SteadyWriter();
  if (isIncomplete_ && existing_ != Existing::kFollowed && isPlainFile(path_.c_str()))
    unlink(path_.c_str());
}

bool NewFile::fail(int error) {
  if (error_ == 0) error_ = error;
  return false;
}

std::FILE* NewFile::stream() {
  if (stream_ || !isOpen() || error_ != 0) return stream_.get();
  if (!file_.flush()) {
    fail(errno);
    return nullptr;
  }
  OwnedDescriptor own(fcntl(file_.descriptor(), F_DUPFD_CLOEXEC, 0));
  stream_.reset(fdopen(own.get(), "wb"));
  if (!stream_) {
    fail(errno);
  } else {
    own.release();
  }
  return stream_.get();
}

bool NewFile::write(const void* data, std::size_t size) {
  if (error_ != 0 || !isOpen()) return false;
  const bool isWritten =
      stream_ ? std::fwrite(data, 1, size, stream_.get()) == size : file_.write(data, size);
  return isWritten || fail(errno);
}

bool NewFile::setMode(unsigned mode) {
  struct stat found {};
  if (!isOpen() || fstat(file_.descriptor(), &found) != 0) return false;
  const auto wanted = static_cast<mode_t>(mode);
  if ((found.st_mode & kAllModeBits) == wanted) return true;
  return found.st_nlink <= 1 && found.st_uid == geteuid() &&
         inTwoTries([&] { return fchmod(file_.descriptor(), wanted) == 0; });
}

bool NewFile::close() {
  if (!isOpen()) return false;
  // Of a failure that write() has not seen only the fact is known.
  if (stream_ && std::ferror(stream_.get()) != 0) fail(EIO);
  if (stream_ && std::fclose(stream_.release()) != 0) fail(errno);
  if (!file_.close()) fail(errno);
  isIncomplete_ = error_ != 0;
  return !isIncomplete_;
}

}  // namespace quillory
