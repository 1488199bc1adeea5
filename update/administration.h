// Updates of an installation for all users, which its administrator alone may write to. A user asks
// for one with `install --elevate`, and what then runs with the administrator's rights is
// `install-for-all`: the installation's own program, out of a folder that nobody else can have
// written. It is told nothing that would decide what is installed: which installation it is says
// the place of the program, and URL, keys and the runtime's name say the settings beside it, or a
// state that an administrator's run has written.
#pragma once
#include <functional>
#include <optional>
#include <string>

#include "update/installation.h"

namespace quillory::update {

/// The first place on the way to `path` that another user than the administrator could have
/// changed: one that is his, that others may write to, or that is a link. "" when there is none.
/// What is missing counts as changed. `from` is trusted itself, and above `path`.
std::string openPlaceOn(const std::string& path, const std::string& from = "/");

/// The same of everything below a folder; "" also where there is no such folder.
std::string openPlaceBelow(const std::string& folder);

/// A program to be run with the administrator's rights, or why not, in words.
struct AdministratorsProgram {
  std::string path;
  std::string whyNot;
};

/// The quillory-update of the newest updater of that installation, which runs `install-for-all`.
AdministratorsProgram administratorsProgram(const Installation& installation,
                                            const std::string& from = "/");

/// The installation that `program`, which runs, is the quillory-update of, as the administrator
/// knows it: nothing of it could have been written by anybody else, and all that it is updated by
/// is in its master folder. Nothing, with the reason in `why`, where that is not so.
std::optional<Installation> administeredInstallation(const std::string& program, std::string& why,
                                                     const std::string& from = "/");

/// Runs the program of `installation` by elev_mac, which the bundle of the start carries, with this
/// process's standard error, and `lines` as its standard output. Its exit status, or one of
/// elev_mac's (tools/elevation.h).
int runElevated(const Installation& installation, const AdministratorsProgram& program,
                const std::string& draw, int lines);

/// Leaves nothing to whoever has started this process that a run with the administrator's rights
/// could be led by: working folder, file mode mask, environment but for proxies.
void standAlone();

}  // namespace quillory::update
