// Looks into, and changes, a process that is stopped before or behind a system call. x86-64 Linux.
#pragma once
#include <sys/types.h>

#include <array>
#include <cstdint>
#include <string>

#include "tests/faults/call_table.h"

namespace quillory::faults {

/// A call that a process is about to make.
struct PendingCall {
  const Call* call = nullptr;
  CallKind kind = CallKind::kChange;  ///< of an open: by its flags
  std::array<std::uint64_t, 6> arguments{};
  std::string path;  ///< absolute, or "" where the call names none
};

/// Nothing known (`call` is null) for a call that the table does not have.
PendingCall pendingCallOf(pid_t thread);

/// The call is not made; leaveCall() then says what its caller gets.
void skipCall(pid_t thread);
/// A read or write is made of half of its bytes. False when it cannot be shorter.
bool halveCall(pid_t thread, const PendingCall& call);
/// What the call behind which the process stands returns to it: a value, or a negative errno.
void leaveCall(pid_t thread, std::int64_t result);
/// What it returned.
std::int64_t resultOf(pid_t thread);

/// The process that a thread belongs to.
pid_t processOf(pid_t thread);

/// How long a call of kind kSleep is going to wait, in seconds.
std::int64_t secondsOf(pid_t thread, const PendingCall& call);
/// Whether a call of kind kMake makes a thread.
bool makesThread(pid_t thread, const PendingCall& call);

}  // namespace quillory::faults
