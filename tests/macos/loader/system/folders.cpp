// Folders and what is done to names in them.
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/file_numbers.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

struct TheirEntry {
  std::uint64_t inode;
  std::uint64_t offset;
  std::uint16_t size;
  std::uint16_t nameLength;
  std::uint8_t type;
  char name[1024];
};
static_assert(offsetof(TheirEntry, name) == 21);

/// What the image has as a DIR, of which it never looks inside.
struct TheirFolder {
  DIR* folder;
  TheirEntry entry;
};

TheirFolder* wrapped(DIR* folder) {
  return folder == nullptr ? nullptr : new TheirFolder{folder, {}};
}

TheirFolder* theirOpendir(const char* path) { return wrapped(opendir(path)); }

TheirFolder* theirFdopendir(int file) { return wrapped(fdopendir(file)); }

TheirEntry* theirReaddir(TheirFolder* their) {
  const dirent* const ours = readdir(their->folder);
  if (ours == nullptr) return nullptr;
  TheirEntry& entry = their->entry;
  entry.inode = ours->d_ino;
  entry.offset = static_cast<std::uint64_t>(ours->d_off);
  entry.nameLength = static_cast<std::uint16_t>(std::strlen(ours->d_name));
  entry.size = static_cast<std::uint16_t>(offsetof(TheirEntry, name) + entry.nameLength + 1);
  entry.type = ours->d_type;  // whose numbers are the same
  std::memcpy(entry.name, ours->d_name, entry.nameLength + 1u);
  return &entry;
}

int theirDirfd(TheirFolder* their) { return dirfd(their->folder); }

void theirRewinddir(TheirFolder* their) { rewinddir(their->folder); }

int theirClosedir(TheirFolder* their) {
  const int result = closedir(their->folder);
  delete their;
  return result;
}

int theirUnlinkat(int folder, const char* path, int flags) {
  return unlinkat(ourFolder(folder), path, ourAtFlags(flags));
}

int theirFchmodat(int folder, const char* path, unsigned mode, int flags) {
  return fchmodat(ourFolder(folder), path, mode, ourAtFlags(flags));
}

int theirFaccessat(int folder, const char* path, int mode, int flags) {
  return faccessat(ourFolder(folder), path, mode, ourAtFlags(flags));
}

int theirMkdirat(int folder, const char* path, unsigned mode) {
  return mkdirat(ourFolder(folder), path, mode);
}

ssize_t theirReadlinkat(int folder, const char* path, char* buffer, std::size_t size) {
  return readlinkat(ourFolder(folder), path, buffer, size);
}

int theirSymlinkat(const char* target, int folder, const char* path) {
  return symlinkat(target, ourFolder(folder), path);
}

int theirRenameat(int fromFolder, const char* from, int toFolder, const char* to) {
  return renameat(ourFolder(fromFolder), from, ourFolder(toFolder), to);
}

int theirRenameatx(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
  constexpr unsigned kTheirSwap = 2;
  constexpr unsigned kTheirExclusive = 4;
  if ((flags & ~(kTheirSwap | kTheirExclusive)) != 0) fail("renamex_np: flags", flags);
  const unsigned ours = ((flags & kTheirSwap) != 0 ? RENAME_EXCHANGE : 0u) |
                        ((flags & kTheirExclusive) != 0 ? RENAME_NOREPLACE : 0u);
  return renameat2(ourFolder(fromFolder), from, ourFolder(toFolder), to, ours);
}

int theirRenamex(const char* from, const char* to, unsigned flags) {
  return theirRenameatx(kTheirCurrentFolder, from, kTheirCurrentFolder, to, flags);
}

char* theirRealpath(const char* path, char* buffer) { return realpath(path, buffer); }

struct TheirFileSystem {
  unsigned long blockSize;
  unsigned long fragmentSize;
  std::uint32_t blocks;
  std::uint32_t freeBlocks;
  std::uint32_t availableBlocks;
  std::uint32_t files;
  std::uint32_t freeFiles;
  std::uint32_t availableFiles;
  unsigned long id;
  unsigned long flags;
  unsigned long longestName;
};
static_assert(sizeof(TheirFileSystem) == 64);

int theirStatvfs(const char* path, TheirFileSystem* theirs) {
  struct statvfs ours;
  const int result = statvfs(path, &ours);
  if (result != 0) return result;
  *theirs = {ours.f_bsize,
             ours.f_frsize,
             static_cast<std::uint32_t>(ours.f_blocks),
             static_cast<std::uint32_t>(ours.f_bfree),
             static_cast<std::uint32_t>(ours.f_bavail),
             static_cast<std::uint32_t>(ours.f_files),
             static_cast<std::uint32_t>(ours.f_ffree),
             static_cast<std::uint32_t>(ours.f_favail),
             ours.f_fsid,
             ours.f_flag & 1,  // read-only
             ours.f_namemax};
  return 0;
}

}  // namespace

Symbols folderSymbols() {
  static const Symbol kSymbols[] = {
      {"_closedir", code(theirClosedir)},
      {"_dirfd", code(theirDirfd)},
      {"_faccessat", code(theirFaccessat)},
      {"_fchmodat", code(theirFchmodat)},
      {"_fdopendir$INODE64", code(theirFdopendir)},
      {"_mkdirat", code(theirMkdirat)},
      {"_opendir$INODE64", code(theirOpendir)},
      {"_readdir$INODE64", code(theirReaddir)},
      {"_readlinkat", code(theirReadlinkat)},
      {"_realpath$DARWIN_EXTSN", code(theirRealpath)},
      {"_renameat", code(theirRenameat)},
      {"_renameatx_np", code(theirRenameatx)},
      {"_renamex_np", code(theirRenamex)},
      {"_rewinddir", code(theirRewinddir)},
      {"_statvfs", code(theirStatvfs)},
      {"_symlinkat", code(theirSymlinkat)},
      {"_unlinkat", code(theirUnlinkat)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
