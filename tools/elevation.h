// Running a program with administrator rights. What this takes differs from system to system: one
// of elevation_linux.cpp and elevation_macos.cpp is linked.
#pragma once
#include <string>
#include <vector>

namespace quillory {

/// How a run ends when the program itself was not run. Values of sysexits.h, far from what programs
/// usually end with.
inline constexpr int kElevationWrongUse = 64;
inline constexpr int kElevationNoProgram = 66;    ///< the program cannot be executed
inline constexpr int kElevationUnavailable = 69;  ///< nothing here could give the rights
inline constexpr int kElevationDenied = 77;       ///< not permitted, or cancelled by the user

struct ElevationRequest {
  std::string prompt;                ///< what the user is asked with, where the system shows it
  std::vector<std::string> command;  ///< the absolute path of the program, then its arguments
};

/// What decides which way is taken.
struct Surroundings {
  bool isRoot = false;
  bool hasDisplay = false;
  /// Where the system's own tools lie. Never from PATH, which anyone may have set: what is found
  /// there asks for a password.
  std::vector<std::string> toolFolders;
};

/// Those of this process.
Surroundings lookAround();

/// Runs the command, with the rights of the administrator, to its end.
///
/// The program's exit status, 128 and the signal's number when one ended it, or one of the statuses
/// above, with a message on standard error. As root the program takes this process's place: the
/// call then returns only when that fails. A status that a tool has for itself and for the program
/// alike is told apart as well as the tool allows; docs/operating.md says where it cannot be.
int runWithRights(const ElevationRequest& request, const Surroundings& surroundings);

/// The system's part of it, for a user who is not root: asks with the tool that is there for it,
/// and gives the same statuses, with a message, as runWithRights().
int askForRights(const ElevationRequest& request, const Surroundings& surroundings);

}  // namespace quillory
