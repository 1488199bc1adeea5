// Old versions, which go when nobody needs them any more.
#pragma once
#include <cstdint>
#include <string>

#include "update/installation.h"

namespace quillory::update {

/// Whether a program runs out of that version folder: the updater locks a file of its name in
/// QYUpdates/holds while it does.
bool isHeld(const Installation& installation, const std::string& folder);

/// Deletes old versions of application, updater and runtime. Of each stay the newest `keep`, which
/// are two at least; of the application also the newest that is known to work and the one before
/// it; what the bundle carries, which its launcher would only install again; the updater of this
/// start; and what is held, as a running application holds its runtime and its updater, too.
///
/// A version loses its name first, so that no start meets half of one. Holds the lock of the
/// installation; where it is taken, another run does it.
void deleteOldVersions(const Installation& installation, std::int64_t keep);

}  // namespace quillory::update
