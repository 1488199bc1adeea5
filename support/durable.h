// What the disk keeps when the power fails. A file that was written, and a name that was given, are
// in the memory of the system first, and names may reach the disk before the bytes behind them: a
// file of no bytes under its final name is what is left then. So whatever gets a final name is
// flushed before, and the folder of the name afterwards.
//
// Every call waits for the disk, which takes from a few to some hundred milliseconds: for
// installations and for what people keep, never for what each start writes. A failure is logged and
// told, with the reason in errno; nothing is undone, and a start goes on. A file system that has no
// such call (of a network, say) counts as flushed. For any thread.
#pragma once
#include <string>

namespace quillory {

/// The content of a file, not its name. `path` is for the log.
bool syncFile(int descriptor, const std::string& path);
/// The same of a file that nobody has open. A link is not followed: false.
bool syncFile(const std::string& path);

/// The names in `folder`, as after a rename; not what is in the files.
bool syncFolder(const std::string& folder);

/// Everything below `folder`, contents and names, and its own list of names; but not its own name,
/// which its parent has. Links in it are not followed. Where the system can, by one call for the
/// whole file system: what other programs have written there is waited for, too.
bool syncTree(const std::string& folder);

/// How it is done here. Assigned to by tests only. Each returns 0 or an error number; `path` is
/// what the descriptor was opened with.
struct DurableCalls {
  int (*flushFile)(int descriptor, const std::string& path);
  int (*flushFolder)(int descriptor, const std::string& path);
  int (*flushTree)(int descriptor, const std::string& path);
};
extern DurableCalls durableCalls;

}  // namespace quillory
