// elev_mac: runs one program with administrator rights. The launcher finds it in its bundle and
// runs itself through it where the user may not write to the install location.
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/standard_streams.h"
#include "tools/elevation.h"
#include "tools/elevation_tools.h"

namespace {

using quillory::ElevationRequest;

constexpr char kHelp[] =
    "usage: elev_mac --prompt=TEXT PROGRAM [ARG...]\n"
    "       elev_mac --help\n"
    "\n"
    "Runs PROGRAM, an absolute path, with administrator rights, waits for its end and ends with\n"
    "its exit status. The user is asked with TEXT: on macOS in the system's dialog; elsewhere by\n"
    "pkexec (which shows a text of its own) where there is a display and pkexec is installed,\n"
    "else by sudo on the terminal. As root, PROGRAM is simply run.\n"
    "\n"
    "exit status: PROGRAM's own; 128 and the number of the signal that ended it; or\n"
    "  64 wrong use\n"
    "  66 PROGRAM cannot be executed\n"
    "  69 nothing on this machine could give the rights\n"
    "  77 not permitted, or cancelled\n"
    "\n"
    "example: elev_mac --prompt='My App' /opt/my/installer --all-users\n";

constexpr std::string_view kPrompt = "--prompt=";

std::optional<ElevationRequest> parse(const std::vector<std::string>& arguments) {
  if (arguments.size() < 2 || !arguments[0].starts_with(kPrompt)) return std::nullopt;
  return ElevationRequest{arguments[0].substr(kPrompt.size()),
                          {arguments.begin() + 1, arguments.end()}};
}

/// Ctrl-C is for the program and the tool that asks for the password; this process has to stay and
/// tell how they end. A handler, unlike an ignored signal, is not inherited by them.
void leaveKeyboardSignalsToChildren() {
  for (const int number : {SIGINT, SIGQUIT}) {
    if (std::signal(
            number, +[](int) {}) == SIG_IGN)
      std::signal(number, SIG_IGN);
  }
}

}  // namespace

int main(int argc, char** argv) {
  quillory::fillStandardStreams();
  // The status tells what became of it, also where nobody reads the message.
  quillory::outliveReaders();
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
    std::fputs(kHelp, stdout);
    return 0;
  }
  const std::optional<ElevationRequest> request = parse(arguments);
  if (!request.has_value()) {
    std::fputs(kHelp, stderr);
    return quillory::kElevationWrongUse;
  }
  // A relative path would be another program in another folder, and PATH another one for root.
  if (!request->command[0].starts_with('/')) {
    quillory::complain("PROGRAM is not an absolute path: " + request->command[0]);
    return quillory::kElevationWrongUse;
  }
  leaveKeyboardSignalsToChildren();
  return quillory::runWithRights(*request, quillory::lookAround());
}
