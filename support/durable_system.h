// How this system flushes: durable_linux.cpp or durable_macos.cpp. For durable.cpp and
// flush_each.cpp alone.
#pragma once
#include <string>

namespace quillory {

// Each returns 0 or an error number.

/// One file, or one folder's names, to the disk itself and not to its cache only.
int flushOne(int descriptor);
/// All below `folder`, which is open as `descriptor`.
int flushAll(int descriptor, const std::string& folder);

/// Whether the error is that of a file system which has no such call: that counts as flushed.
bool isUnknownToFileSystem(int error);

}  // namespace quillory
