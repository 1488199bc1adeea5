// The commands of quillory-update. docs/formats/update-lines.md has what each says and how it ends.
#pragma once
#include <functional>
#include <string>

#include "update/installation.h"
#include "update/lines.h"
#include "update/settings_in_force.h"
#include "update/transport.h"

namespace quillory::update {

// Exit statuses.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitOff = 3;  ///< switched off, or pinned to another version
inline constexpr int kExitNeedsAdministrator = 4;
inline constexpr int kExitBusy = 75;  ///< another run is at work

// Those of elev_mac when the rights were not given, or there was nothing to be run.
inline constexpr int kElevationStatuses[] = {64, 66, 69, 77};

enum class Command {
  kCheck,
  kDownload,    ///< check, load, stage
  kInstall,     ///< download, and put in place
  kBackground,  ///< what the mode asks for, when it is due
  kStatus,
  kSkip,
  kRemindLater,
  kSetChannel,
};

/// What a command stands on: a simulation has its own transport and lines, and the clock's seam.
struct CommandRequest {
  Command command = Command::kStatus;
  const Installation& installation;
  std::string argument{};  ///< a version to skip, hours, or a channel
  Transport& transport;
  Lines lines;
  std::string administratorsFolder = kAdministratorsFolder;
  std::string draw{};  ///< of a user for whom an administrator installs; "" for the state's
  /// Has the administrator install what this user may not, when the installation has been offered
  /// something, and says how that has ended: an exit status of this program or of elev_mac, or a
  /// negative number. It tells its own lines. Without it nobody is asked.
  std::function<int(const std::string& draw)> elevate{};
};

/// Runs it under the lock of the installation's updates, and returns the exit status. Every failure
/// is told in a line, and in the state.
int runCommand(const CommandRequest& request);

}  // namespace quillory::update
