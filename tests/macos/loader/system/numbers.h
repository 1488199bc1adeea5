// Numbers that mean the same under another value: error numbers, signals and wait statuses.
// "Theirs" are the image's, "ours" those of this machine.
#pragma once

namespace quillory::loader {

int theirError(int ours);
int ourError(int theirs);

/// 0 for a signal that the other system does not have.
int theirSignal(int ours);
int ourSignal(int theirs);

/// What waitpid() stores.
int theirWaitStatus(int ours);

/// The address of the calling thread's error number, in their numbers. The C library's own one
/// counts as "not fetched yet" while it is not 0.
int* theirErrorPlace();

/// For calls that answer with an error number: 0 stays 0.
inline int asTheirError(int ours) { return ours == 0 ? 0 : theirError(ours); }

}  // namespace quillory::loader
