// What started this process.
#pragma once

namespace quillory {

/// Whether the parent process runs the same executable file as this one; false when that cannot be
/// found out.
bool parentRunsThisExecutable();

}  // namespace quillory
