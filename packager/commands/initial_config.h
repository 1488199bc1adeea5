// The text of a first configuration, for an application that was found.
#pragma once
#include <string>
#include <vector>

#include "formats/params_format.h"
#include "packager/content/found_application.h"

namespace quillory::pack {

/// What a command line of Java says, as a configuration says it.
struct InitialJvm {
  int maximumHeap = 0;  ///< mebibytes; 0 for none
  int initialHeap = 0;
  Parameters systemProperties;
  std::vector<std::string> options;  ///< what a JVM has to know from its first moment
  std::vector<std::string> leftOut;  ///< what only the program java takes, or needs a script
};
InitialJvm initialJvm(const std::vector<std::string>& options);

/// A commented configuration of what was found in `folder`. A main class that nobody knows is an
/// example.
std::string initialConfig(const FoundApplication& found, const std::string& folder);

}  // namespace quillory::pack
