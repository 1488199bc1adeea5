#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "support/durable_system.h"
#include "support/flush_each.h"

namespace quillory {
namespace {

// As far as the disk, which may keep it in its own memory for a while.
int flushToDisk(int descriptor) { return fsync(descriptor) == 0 ? 0 : errno; }

}  // namespace

// Disks of a network and some of other makers know no F_FULLFSYNC.
int flushOne(int descriptor) {
  return fcntl(descriptor, F_FULLFSYNC) == 0 ? 0 : flushToDisk(descriptor);
}

// The disk's own memory is emptied once, behind the last file.
int flushAll(int descriptor, const std::string& folder) {
  const int error = flushEachBelow(descriptor, folder, flushToDisk);
  const int last = flushOne(descriptor);
  return error != 0 ? error : last;
}

}  // namespace quillory
