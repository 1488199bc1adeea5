// Two paths that change places in one step, where the system and the file system can do that: who
// looks sees the one or the other state, and so does the next start after a kill or a power cut.
#pragma once

namespace quillory {

struct ExchangeCalls {
  /// 0 when what was at `a` is at `b` now and the reverse; else an error number, and nothing has
  /// changed. Both must be on one file system; a link is exchanged itself, not what it leads to.
  int (*exchange)(const char* a, const char* b);
};
/// Assigned to by tests only, through ScopedReplace.
extern ExchangeCalls exchangeCalls;

}  // namespace quillory
