// The command line of quillory-update, and what it says of itself.
#pragma once
#include <sys/types.h>

#include <string>
#include <vector>

#include "update/commands.h"

namespace quillory::update {

inline constexpr char kProgramVersion[] = "1.0";

// Texts of --help and of the manual page.
inline constexpr char kUsage[] =
    "quillory-update COMMAND --properties FILE [--own-folder DIR] [--elevate]\n"
    "quillory-update install-for-all [--draw DRAW]\n"
    "quillory-update proxies URL\n"
    "quillory-update restart --wait PID -- PROGRAM [ARGUMENT]...\n";
inline constexpr char kStatuses[] =
    "0 done, or nothing to do; 1 failed; 2 the command line makes no sense; 3 switched off, or "
    "pinned to another version; 4 an administrator has to do it; 75 another run is at work.";

struct DescribedCommand {
  const char* name;
  const char* argument;  ///< "" for none
  const char* text;
  Command command;
};
extern const std::vector<DescribedCommand> kCommands;

struct CommandLine {
  enum class Kind { kHelp, kVersion, kCommand, kInstallForAll, kProxies, kRestart, kMistake };
  Kind kind = Kind::kMistake;
  std::string mistake{};  ///< in words
  Command command = Command::kStatus;
  std::string argument{};
  std::string properties{};
  std::string ownFolder{};
  bool elevates = false;
  std::string draw{};
  pid_t waitFor = 0;
  std::vector<std::string> program{};
};

/// `arguments` without the program's own name.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// What --help prints.
std::string help();
/// The manual page.
std::string manual();

}  // namespace quillory::update
