// Reads a command line by the commands' own descriptions. The library that does it stays behind
// this header.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"

namespace quillory::pack {

/// What a command line comes to: one of the three.
struct ParsedLine {
  const Command* command = nullptr;  ///< one of those given, to be run; its arguments are set
  std::string text;                  ///< what --help or --version prints
  std::string mistake;               ///< why the command line makes no sense
};

/// `common` are arguments that every command has before its own. When the result has no command,
/// nothing may be run, although some arguments may be set.
ParsedLine parseArguments(const std::vector<Command>& commands, const std::vector<Argument>& common,
                          const std::vector<std::string>& arguments);

/// The help of the program as a whole.
std::string programHelp(const std::vector<Command>& commands, const std::vector<Argument>& common);

}  // namespace quillory::pack
