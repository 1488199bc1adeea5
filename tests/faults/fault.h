// What can be done to a call: which fault goes with which.
#pragma once
#include <optional>
#include <string>

#include "tests/faults/tracee.h"

namespace quillory::faults {

enum class FaultKind {
  kNone,
  kKill,     ///< the process that makes the call ends before it
  kKillAll,  ///< so do all others of the start
  kShort,    ///< a read or write is made of half of its bytes
  kFail,     ///< the call is not made, and fails
};

struct Fault {
  FaultKind kind = FaultKind::kNone;
  int error = 0;  ///< of kFail
};

/// "kill", "kill-all", "short", "ENOSPC", "EIO", "EMFILE", "EINTR" or "EAGAIN".
std::optional<Fault> faultNamed(const std::string& name);

/// Whether a system can do this to this call: a disk that is full does not refuse to delete.
bool canHappen(const Fault& fault, const PendingCall& call);

/// The names of all that can happen to it, with commas between.
std::string faultsFor(const PendingCall& call);

}  // namespace quillory::faults
