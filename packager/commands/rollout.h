// Changes who is offered the release that is in force.
#pragma once
#include "packager/commands/command.h"

namespace quillory::pack {

/// "rollout": a part of the installations at once, or all of them day by day from now on.
Command rolloutCommand();

}  // namespace quillory::pack
