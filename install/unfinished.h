// The mark of an installation that has not come to its end. It lies in the updater's folder from
// before that folder gets its name until everything else has its place, too: the folder's name
// alone would tell the next start that the version is installed.
#pragma once
#include <string>

namespace quillory {

/// Marks what is installed with the updater in `updaterFolder` as unfinished.
void markUnfinished(const std::string& updaterFolder);
/// Takes the mark away when the disk has the names of all components in the master folder.
void markFinished(const std::string& updaterFolder);
/// Whether it is marked; without a log line.
bool isUnfinished(const std::string& updaterFolder);

}  // namespace quillory
