#include "java/whole_copy.h"

#include <fcntl.h>
#include <sys/types.h>

#include <cstddef>
#include <vector>

#include "support/log.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

enum class CopyStep { kRead, kWrite, kDone };

bool copyContent(int source, OutputFile& copy) {
  std::vector<char> block(kBlockBytes);
  for (;;) {
    const ssize_t count = readSteadily(source, block.data(), block.size());
    if (count <= 0) return count == 0;
    if (!copy.write(block.data(), static_cast<std::size_t>(count))) return false;
  }
}

bool copyInto(OutputFile&& copy, int source) { return copyContent(source, copy) && copy.commit(); }

// How far it came.
CopyStep copyOnce(const std::string& source, const CopyTarget& target) {
  const OwnedDescriptor from = openSteadily(source, O_RDONLY);
  if (from.get() == -1) return CopyStep::kRead;
  const bool isCopied = target.mode ? copyInto(OutputFile(target.path, *target.mode), from.get())
                                    : copyInto(OutputFile(target.path), from.get());
  return isCopied ? CopyStep::kDone : CopyStep::kWrite;
}

}  // namespace

bool copyWhole(const std::string& source, const CopyTarget& target) {
  logMessage("[Extractor] Copying FILE %s\n", target.shown.c_str());
  CopyStep reached = CopyStep::kRead;
  const auto attempt = [&] {
    reached = copyOnce(source, target);
    return reached == CopyStep::kDone;
  };
  if (inTwoTries(attempt)) return true;
  const char* const what = reached == CopyStep::kRead ? "source" : "destination";
  const std::string& file = reached == CopyStep::kRead ? source : target.shown;
  logMessage("[Extractor] *************************** Unable to open %s file for copy %s\n", what,
             file.c_str());
  return false;
}

}  // namespace quillory
