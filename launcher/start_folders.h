// The folders of a start: where its application is installed, and where its user may write.
#pragma once
#include <string>

#include "launcher/start.h"

namespace quillory {

/// The folder that the applications of this user, or of all, are installed in; it ends the process
/// where there is none, with a line in the log.
std::string findSharedDirectory(const Start& start);

/// Enters the installation in `sharedDirectory`: the modes of what is made in it, the master folder
/// and the user's own, the log file in that, and the JRE name that counts there. Ends the process
/// where the name can be none, and where the installation could not be closed to others.
void enterMasterFolder(Start& start, const std::string& sharedDirectory);

}  // namespace quillory
