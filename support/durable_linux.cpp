#include <unistd.h>

#include <cerrno>

#include "support/durable_system.h"

namespace quillory {

int flushOne(int descriptor) { return fsync(descriptor) == 0 ? 0 : errno; }

// One commit of the file system's journal instead of one for each of some thousand files.
int flushAll(int descriptor, const std::string&) { return syncfs(descriptor) == 0 ? 0 : errno; }

}  // namespace quillory
