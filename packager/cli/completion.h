// Scripts that let a shell complete the command line, and the command that prints them.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"

namespace quillory::pack {

/// `shell` is "bash", "zsh" or "fish". `common` are arguments that every command has before its
/// own. Names of commands and options are completed, and the choices of options; all else is taken
/// for a file.
std::string completionScript(const std::string& shell, const std::vector<Command>& commands,
                             const std::vector<Argument>& common);

/// "completion": prints the script of a shell.
Command completionCommand();

}  // namespace quillory::pack
