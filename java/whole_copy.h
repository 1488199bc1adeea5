// A copy of a file that gets its name when it is complete: what stood there stays until then, and a
// start that is killed, or meets a full disk, leaves no half of it under that name.
#pragma once
#include <optional>
#include <string>

#include "support/output_file.h"

namespace quillory {

struct CopyTarget {
  std::string path;
  std::string shown;                   ///< what the log calls it
  std::optional<ExactMode> mode = {};  ///< else what the umask leaves of 0666
};

/// Copies `source` to its target, in two tries. False, with a line in the log, when the copy cannot
/// be made whole or cannot get its name; then what stood there stays.
bool copyWhole(const std::string& source, const CopyTarget& target);

}  // namespace quillory
