// quillory-pack as data: its commands with all that they can be given. The help, the completion
// scripts and the manual pages are made from it.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"

namespace quillory::pack {

inline constexpr char kProgramName[] = "quillory-pack";
inline constexpr char kProgramDescription[] = "Packs Java applications for the launcher.";
inline constexpr char kProgramVersion[] = "quillory-pack 1.0";
/// Stands below the list of commands.
inline constexpr char kProgramSteps[] =
    "Ship an application in three commands:\n"
    "  quillory-pack init      # writes quillory.toml for the jars that are here\n"
    "  quillory-pack keygen    # makes signing.pem; keep it, and keep it secret\n"
    "  quillory-pack bundle    # makes dist/<App>.app and dist/release/";
inline constexpr char kProgramStatuses[] =
    "0 done; 1 it could not be done, or what was checked is not good;\n"
    "  2 the command line makes no sense; 3 the configuration or the content has errors";

/// All commands, in the order of the help. Each call makes new ones, with the defaults in what
/// their arguments set.
std::vector<Command> allCommands();

/// The option that prints the help, of the program and of every command.
Argument helpArgument();

/// How much a command says. Of quiet and verbose, verbose counts.
struct TalkOptions {
  bool isQuiet = false;
  bool isVerbose = false;
  bool isJson = false;
};

/// What every command can be told, before its own arguments.
std::vector<Argument> talkArguments(TalkOptions& options);

}  // namespace quillory::pack
