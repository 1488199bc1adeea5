// Files by their descriptors: what is asked and what is opened, in Darwin's numbers and structures.
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/file_numbers.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

struct TheirStat {
  std::int32_t device;
  std::uint16_t mode;
  std::uint16_t links;
  std::uint64_t inode;
  std::uint32_t user;
  std::uint32_t group;
  std::int32_t special;
  timespec accessed;
  timespec modified;
  timespec changed;
  timespec born;
  std::int64_t size;
  std::int64_t blocks;
  std::int32_t blockSize;
  std::uint32_t flags;
  std::uint32_t generation;
  std::int32_t spare;
  std::int64_t spares[2];
};
static_assert(sizeof(TheirStat) == 144);

int translated(int result, const struct stat& ours, TheirStat* theirs) {
  if (result != 0) return result;
  *theirs = {};
  theirs->device = static_cast<std::int32_t>(ours.st_dev);
  theirs->mode = static_cast<std::uint16_t>(ours.st_mode);
  theirs->links = static_cast<std::uint16_t>(ours.st_nlink);
  theirs->inode = ours.st_ino;
  theirs->user = ours.st_uid;
  theirs->group = ours.st_gid;
  theirs->special = static_cast<std::int32_t>(ours.st_rdev);
  theirs->accessed = ours.st_atim;
  theirs->modified = ours.st_mtim;
  theirs->changed = ours.st_ctim;
  theirs->born = ours.st_ctim;
  theirs->size = ours.st_size;
  theirs->blocks = ours.st_blocks;
  theirs->blockSize = static_cast<std::int32_t>(ours.st_blksize);
  return 0;
}

int theirStat(const char* path, TheirStat* result) {
  struct stat ours;
  return translated(stat(path, &ours), ours, result);
}

int theirLstat(const char* path, TheirStat* result) {
  struct stat ours;
  return translated(lstat(path, &ours), ours, result);
}

int theirFstat(int file, TheirStat* result) {
  struct stat ours;
  return translated(fstat(file, &ours), ours, result);
}

int theirFstatat(int folder, const char* path, TheirStat* result, int flags) {
  struct stat ours;
  return translated(fstatat(ourFolder(folder), path, &ours, ourAtFlags(flags)), ours, result);
}

int openWith(int folder, const char* path, int flags, va_list& arguments) {
  const unsigned mode = (flags & kTheirCreate) != 0 ? va_arg(arguments, unsigned) : 0;
  const int ours = ourOpenFlags(flags);
  const int file = openat(ourFolder(folder), path, ours, mode);
  // A link that must not be followed is ELOOP on both, a folder opened for writing EISDIR.
  return file;
}

int theirOpen(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const int file = openWith(kTheirCurrentFolder, path, flags, arguments);
  va_end(arguments);
  return file;
}

int theirOpenat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const int file = openWith(folder, path, flags, arguments);
  va_end(arguments);
  return file;
}

struct TheirLock {
  std::int64_t start;
  std::int64_t length;
  std::int32_t process;
  std::int16_t type;
  std::int16_t from;
};

int lockWith(int file, int ours, TheirLock* theirs) {
  constexpr short kTypes[] = {0, F_RDLCK, F_UNLCK, F_WRLCK};
  if (theirs->type < 1 || theirs->type > 3) fail("fcntl: lock of type", theirs->type);
  struct flock lock = {};
  lock.l_type = kTypes[theirs->type];
  lock.l_whence = theirs->from;
  lock.l_start = theirs->start;
  lock.l_len = theirs->length;
  const int result = fcntl(file, ours, &lock);
  if (ours == F_GETLK && result == 0) {
    theirs->process = lock.l_pid;
    theirs->type = lock.l_type == F_UNLCK ? 2 : lock.l_type == F_RDLCK ? 1 : 3;
  }
  return result;
}

int pathOf(int file, char* buffer) {
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(link.c_str(), buffer, PATH_MAX - 1);
  if (length < 0) {
    errno = EBADF;
    return -1;
  }
  buffer[length] = '\0';
  return 0;
}

int theirFcntl(int file, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  switch (command) {
    case 0:
      return fcntl(file, F_DUPFD, static_cast<int>(argument));
    case 1:
      return fcntl(file, F_GETFD);
    case 2:
      return fcntl(file, F_SETFD, static_cast<int>(argument));
    case 3: {
      const int ours = fcntl(file, F_GETFL);
      return ours < 0 ? ours : theirOpenFlags(ours);
    }
    case 4:
      return fcntl(file, F_SETFL, ourOpenFlags(static_cast<int>(argument)));
    case 7:
      return lockWith(file, F_GETLK, reinterpret_cast<TheirLock*>(argument));
    case 8:
      return lockWith(file, F_SETLK, reinterpret_cast<TheirLock*>(argument));
    case 9:
      return lockWith(file, F_SETLKW, reinterpret_cast<TheirLock*>(argument));
    case 48:
      return 0;  // no caching
    case 50:
      return pathOf(file, reinterpret_cast<char*>(argument));
    case 51:
      return fsync(file);  // down to the disk
    case 67:
      return fcntl(file, F_DUPFD_CLOEXEC, static_cast<int>(argument));
  }
  fail("fcntl: command", command);
}

int theirMkostemp(char* pattern, int flags) { return mkostemp(pattern, ourOpenFlags(flags)); }

timespec ourTime(const timespec& theirs) {
  if (theirs.tv_nsec == -1) return {0, UTIME_NOW};
  if (theirs.tv_nsec == -2) return {0, UTIME_OMIT};
  return theirs;
}

int theirUtimensat(int folder, const char* path, const timespec* times, int flags) {
  if (times == nullptr) return utimensat(ourFolder(folder), path, nullptr, ourAtFlags(flags));
  const timespec ours[] = {ourTime(times[0]), ourTime(times[1])};
  return utimensat(ourFolder(folder), path, ours, ourAtFlags(flags));
}

int theirFutimens(int file, const timespec* times) {
  if (times == nullptr) return futimens(file, nullptr);
  const timespec ours[] = {ourTime(times[0]), ourTime(times[1])};
  return futimens(file, ours);
}

// Names that any user may give an attribute have a prefix here.
ssize_t theirGetxattr(const char* path, const char* name, void* value, std::size_t size,
                      std::uint32_t position, int options) {
  constexpr int kNoFollow = 1;
  if (position != 0 || (options & ~kNoFollow) != 0) fail("getxattr: options", options);
  const std::string ours = std::string("user.") + name;
  return options == 0 ? getxattr(path, ours.c_str(), value, size)
                      : lgetxattr(path, ours.c_str(), value, size);
}

}  // namespace

Symbols fileSymbols() {
  static const Symbol kSymbols[] = {
      {"_fcntl", code(theirFcntl)},
      {"_fstat$INODE64", code(theirFstat)},
      {"_fstatat$INODE64", code(theirFstatat)},
      {"_futimens", code(theirFutimens)},
      {"_getxattr", code(theirGetxattr)},
      {"_lstat$INODE64", code(theirLstat)},
      {"_mkostemp", code(theirMkostemp)},
      {"_open", code(theirOpen)},
      {"_openat", code(theirOpenat)},
      {"_stat$INODE64", code(theirStat)},
      {"_utimensat", code(theirUtimensat)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
