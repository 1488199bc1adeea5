// A copy of a file that gets its name when it is complete: what stood there stays until then, and a
// start that is killed, or meets a full disk, leaves no half of it under that name.
#pragma once
#include <string>

#include "support/output_file.h"

namespace quillory {

/// Copies `source` into `copy`, which gets its name. `target` is what the log calls it. False, with
/// a line in the log, when the copy cannot be made whole or cannot get its name; then what stood
/// there stays.
bool copyWhole(const std::string& source, OutputFile& copy, const std::string& target);

}  // namespace quillory
