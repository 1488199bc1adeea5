// A folder of the installation that takes the place of another: what was there stays whole until
// the new one is there, whenever a start is killed.
//
// Where the file system can exchange two folders in one step, nothing else is needed. Elsewhere the
// old one waits in the master folder, under its own name, until the new one has its place:
//
//   .replaced/Quillory-<name>-<version>-complete
//
// Nothing there is taken for a component, because components are looked for in the master folder
// itself. A later start brings back what has lost its place by a kill.
#pragma once
#include <string>

#include "support/output_file.h"

namespace quillory {

/// Moves the folder `fresh` to `place`, and deletes what was there. `fresh` is on the same file
/// system, and the disk has all of it before it moves. False when it could not be moved: then all
/// is as it was. Nothing is logged.
bool replaceFolder(const std::string& fresh, const std::string& place);

/// The same with the log lines of doRename(), which carries it out where nothing is replaced, and
/// where nothing else helps. With kLeftToTheSystem it does not wait for the disk before the move.
void putInPlace(const std::string& fresh, const std::string& place,
                Durability durability = Durability::kFlushed);

/// Whether a start was killed while something of `masterFolder` was set aside.
bool isAnythingSetAside(const std::string& masterFolder);

/// Brings everything back that was set aside and whose place is empty, with a log line each, and
/// deletes the rest. Only while no other start installs.
void bringBackWhatWasSetAside(const std::string& masterFolder);

}  // namespace quillory
