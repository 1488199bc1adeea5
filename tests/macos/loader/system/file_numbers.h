// Flags of open() and of the ...at() calls. "Theirs" are Darwin's, "ours" those of this machine.
#pragma once

namespace quillory::loader {

inline constexpr int kTheirCurrentFolder = -2;
inline constexpr int kTheirCreate = 0x200;

/// A folder's descriptor, or the one that stands for the working directory.
int ourFolder(int theirs);
/// Unknown flags end the process.
int ourOpenFlags(int theirs);
int theirOpenFlags(int ours);
int ourAtFlags(int theirs);

}  // namespace quillory::loader
