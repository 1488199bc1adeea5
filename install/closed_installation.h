// An installation while the administrator's rights are at work on it. Others may otherwise write to
// its folders: they could exchange a program between its extraction and its start, and have the
// administrator run theirs.
#pragma once
#include <string>

namespace quillory {

/// From now on nobody but this user can change what lies in `masterFolder`, which is made where it
/// is missing: others may look into it, and its version folders and temporary ones are made for
/// this user alone (0700). False, with an error in the log, when somebody else owns it, or has put
/// a link there. Where it cannot be made nothing happens: what follows will say so.
bool closeInstallation(const std::string& masterFolder);

/// Ends that: every folder that was kept closed gets the mode of an installation's folders, the
/// updater's last of the version folders, since a start looks for it first, and then the master
/// folder. Also those that a run left closed that was killed.
void openInstallation(const std::string& masterFolder);

/// Whether nobody but this user can have changed the file at `path`, which lies in `masterFolder`
/// however it is reached: on the way there, either a folder is closed to others, or nothing can be
/// written by them.
bool isOutOfReach(const std::string& masterFolder, const std::string& path);

}  // namespace quillory
