// Whether what is installed is good enough to run, or what the tail carries is extracted first.
#pragma once
#include <string>

namespace quillory {

/// What the decision is made of.
struct UpdateQuestion {
  std::string masterFolder;
  std::string appName;
  std::string jreName;
  std::string guVersion;   ///< of the updater in the tail; empty: none
  std::string appVersion;  ///< of the application in the tail; empty: none
};

struct UpdateDecision {
  bool extract = false;
  std::string installedGu;  ///< folder name of the newest updater; empty: none is installed
};

/// Looks at the newest installed updater, JRE and application, and logs why it decides as it does.
/// An application is looked for only where the updater is current and the tail carries both.
UpdateDecision decideUpdate(const UpdateQuestion& question);

}  // namespace quillory
