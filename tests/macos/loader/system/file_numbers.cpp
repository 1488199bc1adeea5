#include "tests/macos/loader/system/file_numbers.h"

#include <fcntl.h>

#include "tests/macos/loader/fail.h"

namespace quillory::loader {
namespace {

struct Flag {
  int theirs;
  int ours;
};

constexpr Flag kOpenFlags[] = {
    {0x4, O_NONBLOCK},       {0x8, O_APPEND},        {0x80, O_SYNC},  {0x100, O_NOFOLLOW},
    {kTheirCreate, O_CREAT}, {0x400, O_TRUNC},       {0x800, O_EXCL}, {0x20000, O_NOCTTY},
    {0x100000, O_DIRECTORY}, {0x1000000, O_CLOEXEC},
};
constexpr Flag kAtFlags[] = {{0x10, AT_EACCESS},
                             {0x20, AT_SYMLINK_NOFOLLOW},
                             {0x40, AT_SYMLINK_FOLLOW},
                             {0x80, AT_REMOVEDIR}};

template <unsigned long Count>
int ourFlags(const Flag (&table)[Count], int theirs, const char* call) {
  int ours = 0;
  for (const Flag& flag : table) {
    if ((theirs & flag.theirs) != 0) ours |= flag.ours;
    theirs &= ~flag.theirs;
  }
  if (theirs != 0) fail(call, theirs);
  return ours;
}

}  // namespace

int ourFolder(int theirs) { return theirs == kTheirCurrentFolder ? AT_FDCWD : theirs; }

int ourOpenFlags(int theirs) {
  return (theirs & O_ACCMODE) | ourFlags(kOpenFlags, theirs & ~O_ACCMODE, "open: flags");
}

int theirOpenFlags(int ours) {
  int theirs = ours & O_ACCMODE;
  for (const Flag& flag : kOpenFlags)
    if ((ours & flag.ours) == flag.ours) theirs |= flag.theirs;
  return theirs;
}

int ourAtFlags(int theirs) { return ourFlags(kAtFlags, theirs, "flags of a call at a folder"); }

}  // namespace quillory::loader
