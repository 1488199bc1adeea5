// From a launch file to a running Java application.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/property_block.h"
#include "support/exit_status.h"

namespace quillory {

/// Skip the in-process launch. Written where the dynamic parameters are read, and read by the
/// launch flow; both on the run thread.
extern bool forceSpawn;

inline constexpr int kLaunchApplication = 0;
inline constexpr int kLaunchCompatibilityCheck = 1;

/// What is launched: the application, or the class of it that judges a JRE.
struct LaunchRequest {
  std::string masterFolder;
  std::string appFolderName;  ///< the version folder in it that has the launch file
  /// Where the launch writes its properties and finds what an earlier one has remembered, for a
  /// user who does not write to the installation; "" for the updater's folder and the master
  /// folder.
  std::string ownFolder = {};
  const PropertyBlock& properties;  ///< borrowed, and left as it is
  std::vector<std::string> userArguments = {};
  std::string updateUrl = {};  ///< as the tail has it
  std::optional<std::string> dynamicUpdateUrl = {};
  std::string launchedFromDynprops = {};  ///< the property of that name
  int launchClass = kLaunchApplication;   ///< any other than the two launches nothing
  std::string jreName = {};  ///< of the application: the private JRE's folders are found by it
  /// Waits of minutes are told in a window, where there is a display.
  bool showsWaits = false;
  bool onlyWholeJre = false;     ///< of a hardened bundle: folders of others do not count
  std::string javaToCheck = {};  ///< of a compatibility check: the path of a `java`
};

/// What came of it.
struct LaunchResult {
  /// Of the application: 0 when it has run or was started, else an error number. Of the
  /// compatibility class: its exit status, or -1 for a signal or a failed start. Of any other
  /// launch class: -1.
  std::optional<std::int64_t> status = {};
  /// Without a status: that of the launcher, which cannot go on. An error is in the log.
  int exitStatus = kExitSuccess;
};

/// Reads the launch file, writes the launch properties, and starts the application, inside this
/// process or else as one of its own; or runs its compatibility class under the given `java` and
/// waits for it. No status without a launch file or a private JRE (kExitFailure), or without
/// launch properties (kExitNoProperties).
LaunchResult launch(const LaunchRequest& request);

/// Makes what launch() would make in the installation, the application's executable, for users who
/// may not. Nothing to be made, and failures, are as launch() would log them.
void prepareLaunch(const LaunchRequest& request);

/// Whether the compatibility class said kExitJreCompatible.
bool isCompatible(const LaunchResult& result);

}  // namespace quillory
