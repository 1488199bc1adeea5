// Ending a run early. SIGTERM and SIGINT ask for it: what is on its way stays as it is, what has
// been loaded is kept, and the next run goes on from there.
#pragma once
#include <atomic>

namespace quillory::update {

/// Set by a signal, read by whatever takes long.
extern std::atomic<bool> isCancelled;

/// From now on SIGTERM, SIGINT and SIGHUP set it. They end no system call but those that wait.
void cancelOnSignals();

}  // namespace quillory::update
