// Starting the application again after its end.
#pragma once
#include <sys/types.h>

#include <string>
#include <vector>

namespace quillory::update {

/// Waits until there is no process `pid` any more, at most `limitSeconds`, and starts `program`
/// (its path first) as a process of its own, which outlives this one. False, logged, when it still
/// runs then, or nothing can be started.
bool restartAfter(pid_t pid, const std::vector<std::string>& program, int limitSeconds);

}  // namespace quillory::update
