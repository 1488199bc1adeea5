// Copies of files and folders. All stream through one static buffer: no two copies may run at the
// same time, so they are for the start-up thread only.
#pragma once

namespace quillory {

/// Copies what is in `source` into `target`, which must exist. Modes and times are not carried
/// over: callers that need executables use chmodR755() afterwards. Links in `source` are followed,
/// and entries named '.' and one more character are left out by intent.
///
/// 0; or the value of the first failure, at which it stops with a log line, leaving the files that
/// were copied so far.
int copyFolder(const char* source, const char* target);

/// 0, or 1 when a file cannot be opened, read or written to its end (logged). A link at `target` is
/// replaced by the copy, not written through; of an incomplete copy nothing stays.
int copyFile(const char* source, const char* target);

}  // namespace quillory
