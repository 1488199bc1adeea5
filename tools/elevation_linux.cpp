// Systems with polkit or sudo: pkexec asks in a window, sudo on the terminal.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "tools/elevation.h"
#include "tools/elevation_commands.h"
#include "tools/elevation_tools.h"

namespace quillory {
namespace {

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool hasTerminal() {
  const int terminal = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal >= 0) close(terminal);
  return terminal >= 0;
}

int usePkexec(const std::string& tool, const ElevationRequest& request) {
  const int status = runToolForStatus(pkexecCommand(tool, request));
  if (status < 0) return kElevationUnavailable;
  const int result = statusFromPkexec(status);
  if (result == kElevationDenied)
    complain(
        "the administrator's rights were not given: the question was cancelled or not answered "
        "rightly, or this session has no authentication agent that could ask it");
  return result;
}

/// sudo ends with 1 when it refuses, and a program may as well: whether this user may run the
/// program, perhaps now that he has given a password, tells one from the other.
bool isPermittedBySudo(const std::string& tool, const ElevationRequest& request) {
  return runToolQuietly(sudoQuestion(tool, request)) == 0;
}

int useSudo(const std::string& tool, const ElevationRequest& request) {
  constexpr int kRefused = 1;
  const int status = runToolForStatus(sudoCommand(tool, request));
  if (status < 0) return kElevationUnavailable;
  if (status != kRefused || isPermittedBySudo(tool, request)) return status;
  complain("the administrator's rights were not given");
  if (!hasTerminal())
    complain(
        "there is no terminal on which sudo could ask for a password, and no rule that lets "
        "this user run the program without one");
  return kElevationDenied;
}

}  // namespace

Surroundings lookAround() {
  return {.isRoot = isRootForReal(),
          .hasDisplay = isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"),
          .toolFolders = {"/usr/bin", "/bin", "/run/wrappers/bin"}};
}

int askForRights(const ElevationRequest& request, const Surroundings& surroundings) {
  if (surroundings.hasDisplay) {
    const std::string pkexec = findTool(surroundings.toolFolders, "pkexec");
    if (!pkexec.empty()) return usePkexec(pkexec, request);
  }
  const std::string sudo = findTool(surroundings.toolFolders, "sudo");
  if (!sudo.empty()) return useSudo(sudo, request);
  complain(
      surroundings.hasDisplay
          ? "neither pkexec nor sudo is installed: there is no way to get the administrator's "
            "rights"
          : "sudo is not installed, and there is no display for pkexec: there is no way to get "
            "the administrator's rights");
  return kElevationUnavailable;
}

}  // namespace quillory
