// What every fuzz target needs: no log, and a check that is more than a debug assertion.
#pragma once
#include <cstdlib>

namespace quillory::fuzz {

/// Sends the log and standard output nowhere. Findings are reported on standard error.
void silence();

/// Ends the run as a finding when a promise does not hold.
inline void promise(bool holds) {
  if (!holds) std::abort();
}

}  // namespace quillory::fuzz
