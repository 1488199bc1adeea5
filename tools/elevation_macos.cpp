// macOS: the system's own dialog, through AppleScript. Plain POSIX otherwise, so that any system
// can test it.
#include <cstdio>

#include "tools/elevation.h"
#include "tools/elevation_commands.h"
#include "tools/elevation_tools.h"

namespace quillory {

Surroundings lookAround() {
  return {.isRoot = isRootForReal(), .hasDisplay = true, .toolFolders = {"/usr/bin"}};
}

int askForRights(const ElevationRequest& request, const Surroundings& surroundings) {
  const std::string osascript = findTool(surroundings.toolFolders, "osascript");
  if (osascript.empty()) {
    complain("osascript is missing: there is no way to get the administrator's rights");
    return kElevationUnavailable;
  }
  std::string output;
  const int status = runToolForOutput(osascriptCommand(osascript, request), output);
  if (status < 0) return kElevationUnavailable;
  if (status != 0) {
    std::fwrite(output.data(), 1, output.size(), stdout);
    complain("the administrator's rights were not given");
    return kElevationDenied;
  }
  const std::optional<OsascriptOutput> result = readOsascriptOutput(output);
  if (!result.has_value()) {
    complain("osascript ended without the program's status");
    return kElevationUnavailable;
  }
  std::fwrite(result->text.data(), 1, result->text.size(), stdout);
  return result->status;
}

}  // namespace quillory
