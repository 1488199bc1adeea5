// What is staged gets its place: the runtime first, then the updater, the application last, so that
// none of them ever meets one that is older than it needs. Each is one rename; a start of the
// application in between finds what was there before, or a part of the new release that works with
// it. Nothing that is there is renamed over.
#pragma once
#include <string>

#include "update/fetch.h"
#include "update/installation.h"
#include "update/plan.h"

namespace quillory::update {

/// Takes the lock of the installation, waiting for a start that installs, and moves every component
/// of the plan, all of which are staged, to its place. A version that somebody else has installed
/// meanwhile stays as it is. kFailed also when the lock cannot be had: the next run tries again.
FetchResult installStaged(const Installation& installation, const Plan& plan);

/// Whether this user may do that; else the administrator has to.
bool mayInstall(const Installation& installation);

/// Puts the bundle of a runtime beside its home where a run was killed between the two.
void finishRuntimes(const Installation& installation);

}  // namespace quillory::update
