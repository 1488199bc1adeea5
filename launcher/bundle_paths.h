// Where the launcher's own executable lies, and the files of its application bundle:
//
//   <App>.app/Contents/MacOS/<executable>
//   <App>.app/Contents/Resources/...
#pragma once
#include <string>

#include "support/paths.h"

namespace quillory {

struct Executable {
  std::string pathAsPassed;  ///< argv[0]
  std::string absolutePath;
  std::string folder;  ///< of absolutePath; "" for an executable in "/"

  /// <folder>/../Resources/<components>
  template <typename... Components>
  std::string resource(const Components&... components) const {
    return joinPath(folder.empty() ? "/" : folder, "..", "Resources", components...);
  }
};

/// Works out and logs the three. `exePath` is argv[0], possibly relative.
Executable locateExecutable(const std::string& exePath);

}  // namespace quillory
