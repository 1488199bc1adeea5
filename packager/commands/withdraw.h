// Takes a bad version back.
#pragma once
#include <string>

#include "formats/release_list.h"
#include "packager/commands/command.h"
#include "packager/commands/release_folder.h"

namespace quillory::pack {

/// Names `version` of the application as withdrawn. Where the list offers it, it offers instead the
/// newest version of an earlier release that is not withdrawn, to everybody at once; updater and
/// runtime stay, since both only grow. Throws RejectedInput when the version was never released, is
/// withdrawn already, or when there is none to go back to.
void withdrawFrom(ReleaseList& list, const ReleaseFolder& folder, const std::string& version);

/// "withdraw": has installations go back from a version.
Command withdrawCommand();

}  // namespace quillory::pack
