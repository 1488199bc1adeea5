// Whether what is installed is good enough to run, or what the tail carries is extracted first.
#pragma once
#include <optional>
#include <string>

namespace quillory {

/// What the decision is made of.
struct UpdateQuestion {
  std::string masterFolder;
  std::string appName;
  std::string jreName;
  std::string guVersion;   ///< of the updater in the tail; empty: none
  std::string appVersion;  ///< of the application in the tail; empty: none
  /// Of a hardened bundle: a folder that is empty, or lacks what a start needs, does not count.
  bool onlyWhole = false;
};

struct UpdateDecision {
  bool extract = false;
  std::string installedGu;  ///< folder name of the newest updater; empty: none is installed
};

/// Looks at the newest installed updater, JRE and application, and logs why it decides as it does.
/// An application is looked for only where the updater is current and the tail carries both.
UpdateDecision decideUpdate(const UpdateQuestion& question);

/// The folder name of the updater that a start runs: the newest. With `onlyWhole` the newest that
/// has a launch file, and rather an older one than one whose installation has not come to its end.
std::optional<std::string> updaterToRun(const std::string& masterFolder, bool onlyWhole);

/// The updater to run as it is installed, where a usable JRE is installed, too; else nothing.
std::optional<std::string> runnableUpdater(const UpdateQuestion& question);

}  // namespace quillory
