// The manual page of quillory-pack, and the command that prints it.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"

namespace quillory::pack {

/// One page for all commands, which says of each what its help says. `common` are arguments that
/// every command has before its own; they are explained once.
std::string manualPage(const std::vector<Command>& commands, const std::vector<Argument>& common);

/// "manual": prints the page.
Command manualCommand();

}  // namespace quillory::pack
