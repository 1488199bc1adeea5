#include "tests/faults/call_table.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <iterator>

namespace quillory::faults {
namespace {

using enum CallKind;
using enum Naming;

// What is renamed or linked is named by its new place.
constexpr Call kCalls[] = {
    {SYS_open, "open", kRead, kPath, 0},
    {SYS_openat, "openat", kRead, kPathAt, 1},
    {SYS_creat, "creat", kChange, kPath, 0},
    {SYS_write, "write", kChange, kDescriptor, 0},
    {SYS_pwrite64, "pwrite64", kChange, kDescriptor, 0},
    {SYS_writev, "writev", kChange, kDescriptor, 0},
    {SYS_pwritev, "pwritev", kChange, kDescriptor, 0},
    {SYS_sendfile, "sendfile", kChange, kDescriptor, 0},
    {SYS_copy_file_range, "copy_file_range", kChange, kDescriptor, 2},
    {SYS_rename, "rename", kChange, kPath, 1},
    {SYS_renameat, "renameat", kChange, kPathAt, 3},
    {SYS_renameat2, "renameat2", kChange, kPathAt, 3},
    {SYS_mkdir, "mkdir", kChange, kPath, 0},
    {SYS_mkdirat, "mkdirat", kChange, kPathAt, 1},
    {SYS_rmdir, "rmdir", kChange, kPath, 0},
    {SYS_unlink, "unlink", kChange, kPath, 0},
    {SYS_unlinkat, "unlinkat", kChange, kPathAt, 1},
    {SYS_symlink, "symlink", kChange, kPath, 1},
    {SYS_symlinkat, "symlinkat", kChange, kPathAt, 2},
    {SYS_link, "link", kChange, kPath, 1},
    {SYS_linkat, "linkat", kChange, kPathAt, 3},
    {SYS_chmod, "chmod", kChange, kPath, 0},
    {SYS_fchmod, "fchmod", kChange, kDescriptor, 0},
    {SYS_fchmodat, "fchmodat", kChange, kPathAt, 1},
    {SYS_chown, "chown", kChange, kPath, 0},
    {SYS_fchown, "fchown", kChange, kDescriptor, 0},
    {SYS_lchown, "lchown", kChange, kPath, 0},
    {SYS_fchownat, "fchownat", kChange, kPathAt, 1},
    {SYS_truncate, "truncate", kChange, kPath, 0},
    {SYS_ftruncate, "ftruncate", kChange, kDescriptor, 0},
    {SYS_fallocate, "fallocate", kChange, kDescriptor, 0},
    {SYS_utimensat, "utimensat", kChange, kPathAt, 1},
    {SYS_fsync, "fsync", kChange, kDescriptor, 0},
    {SYS_fdatasync, "fdatasync", kChange, kDescriptor, 0},
    {SYS_syncfs, "syncfs", kChange, kDescriptor, 0},
    {SYS_sync, "sync", kChange, kNothing, 0},
    {SYS_read, "read", kRead, kDescriptor, 0},
    {SYS_pread64, "pread64", kRead, kDescriptor, 0},
    {SYS_readv, "readv", kRead, kDescriptor, 0},
    {SYS_getdents64, "getdents64", kRead, kDescriptor, 0},
    {SYS_flock, "flock", kRead, kDescriptor, 0},
    {SYS_clone, "clone", kMake, kNothing, 0},
    {SYS_clone3, "clone3", kMake, kNothing, 0},
    {SYS_fork, "fork", kMake, kNothing, 0},
    {SYS_vfork, "vfork", kMake, kNothing, 0},
    {SYS_pipe, "pipe", kMake, kNothing, 0},
    {SYS_pipe2, "pipe2", kMake, kNothing, 0},
    {SYS_nanosleep, "nanosleep", kSleep, kNothing, 0},
    {SYS_clock_nanosleep, "clock_nanosleep", kSleep, kNothing, 0},
};

}  // namespace

const Call* callOf(std::uint64_t number) {
  const auto* const found = std::find_if(
      std::begin(kCalls), std::end(kCalls),
      [number](const Call& call) { return static_cast<std::uint64_t>(call.number) == number; });
  return found == std::end(kCalls) ? nullptr : found;
}

CallTable allCalls() { return {std::begin(kCalls), static_cast<int>(std::size(kCalls))}; }

bool opensForChange(std::uint64_t flags) {
  return (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
}

}  // namespace quillory::faults
