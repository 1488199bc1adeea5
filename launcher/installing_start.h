// What a start does that has something to install: updater, JRE and application out of its tail,
// or with the administrator's rights where this user may not write.
#pragma once
#include <string>

#include "launcher/start.h"

namespace quillory {

/// Installs them; returns the folder name of the updater to run. `installedGu` is that of the
/// newest one that is there now, "" for none. Where not all of it could be installed, the process
/// ends with the status that says so; a hardened start runs what is there, if anything is whole.
std::string extractEverything(Start& start, const std::string& installedGu);

}  // namespace quillory
