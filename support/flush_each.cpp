#include "support/flush_each.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "support/durable_system.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

int flushEntry(const fs::directory_entry& entry, int (*flush)(int descriptor)) {
  std::error_code unknown;
  const fs::file_type type = entry.symlink_status(unknown).type();
  if (type != fs::file_type::regular && type != fs::file_type::directory) return 0;
  // Somebody may have put a pipe there meanwhile: opening it must not wait for a writer.
  const OwnedDescriptor opened(
      open(entry.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  return opened.get() == -1 ? errno : flush(opened.get());
}

}  // namespace

int flushEachBelow(int descriptor, const std::string& folder, int (*flush)(int descriptor)) {
  int first = 0;
  const auto note = [&first](int error) {
    if (first == 0 && !isUnknownToFileSystem(error)) first = error;
  };
  std::error_code failure;
  for (fs::recursive_directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure))
    note(flushEntry(*entry, flush));
  note(failure.value());
  note(flush(descriptor));
  return first;
}

}  // namespace quillory
