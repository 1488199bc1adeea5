// The system calls that faults are put into: which change something on a disk, which read, and
// which make a process, a thread or a pipe; and where each call says what it works on.
#pragma once
#include <cstdint>

namespace quillory::faults {

enum class CallKind {
  kChange,  ///< changes what is on a disk
  kRead,    ///< reads from one
  kMake,    ///< makes a process, a thread or a pipe
  kSleep,   ///< waits
};

/// Where the arguments name the file or folder: as a descriptor, as a path from the working folder,
/// or as a path from the folder of the descriptor before it.
enum class Naming { kNothing, kDescriptor, kPath, kPathAt };

struct Call {
  int number;
  const char* name;
  CallKind kind;
  Naming naming;
  int argument;  ///< index of the descriptor or of the path
};

/// Nothing for a call that is not looked at.
const Call* callOf(std::uint64_t number);

/// The table itself, for the filter that stops at its calls.
struct CallTable {
  const Call* first;
  int count;
};
CallTable allCalls();

/// Whether an open with these flags can change something.
bool opensForChange(std::uint64_t flags);

}  // namespace quillory::faults
