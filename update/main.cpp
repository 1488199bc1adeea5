// quillory-update: looks for updates of an installed application, loads them and puts them in their
// place. The only program of an installation that talks to the network once the application runs.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "install/file_logging.h"
#include "support/file_modes.h"
#include "support/log.h"
#include "support/platform.h"
#include "support/running_program.h"
#include "support/standard_streams.h"
#include "update/administration.h"
#include "update/cancel.h"
#include "update/command_line.h"
#include "update/commands.h"
#include "update/curl_transport.h"
#include "update/restart.h"
#include "update/system_proxies.h"

namespace {

using namespace quillory;
using namespace quillory::update;

constexpr int kRestartLimitSeconds = 300;
constexpr int kBackgroundNiceness = 10;

// Standard output is for lines: what a library or a program that is started prints is dropped,
// since nobody need read our errors, and a full pipe would stop us.
std::FILE* linesOnly() {
  const int lines = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (lines < 0 || nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) return stdout;
  close(nowhere);
  std::FILE* const stream = fdopen(lines, "w");
  return stream == nullptr ? stdout : stream;
}

// As the launcher chooses them.
void chooseModes(const Installation& installation) {
  if (!installation.isHardened) return;
  chooseInstallationModes(installation.isForAllUsers ? InstallationModes::kOnlyTrustedAreUsed
                                                     : InstallationModes::kOwnerWrites);
}

Lines linesTo(std::FILE* out) {
  return [out](const Line& said) {
    std::fprintf(out, "%s\n", said.text().c_str());
    std::fflush(out);
  };
}

// By the installation's own program, or, where that could be anybody's, by nobody.
int elevateFor(const Installation& installation, const std::string& draw, std::FILE* out,
               const Lines& lines) {
  const AdministratorsProgram program = administratorsProgram(installation);
  if (program.whyNot.empty()) return runElevated(installation, program, draw, fileno(out));
  logMessage("[Update] Not updated: %s\n", program.whyNot.c_str());
  lines(Line("failed").with("reason", program.whyNot).with("retry", 0));
  return kExitFailed;
}

int installForAll(const CommandLine& line, std::FILE* out) {
  const Lines lines = linesTo(out);
  const auto refuse = [&lines](const std::string& why, int status) {
    lines(Line("failed").with("reason", why).with("retry", 0));
    return status;
  };
  if (getuid() != 0 || geteuid() != 0)
    return refuse("only an administrator can do that", kExitNeedsAdministrator);
  standAlone();
  chooseInstallationModes(InstallationModes::kOnlyTrustedAreUsed);
  std::string why;
  const std::optional<Installation> installation = administeredInstallation(runningProgram(), why);
  if (!installation) return refuse(why, kExitFailed);
  setupFileLogging(installation->ownFolder.c_str(), "Update");
  const std::unique_ptr<Transport> transport = makeCurlTransport();
  return runCommand({.command = Command::kInstall,
                     .installation = *installation,
                     .transport = *transport,
                     .lines = lines,
                     .draw = line.draw});
}

int runOn(const CommandLine& line, std::FILE* out) {
  const Lines lines = linesTo(out);
  std::string why;
  const std::optional<Installation> installation =
      readInstallation(line.properties, line.ownFolder, why);
  if (!installation) {
    lines(Line("failed").with("reason", why).with("retry", 0));
    return kExitFailed;
  }
  chooseModes(*installation);
  // Others are at work on this machine.
  if (line.command == Command::kBackground) (void)!nice(kBackgroundNiceness);
  if (line.command != Command::kStatus) setupFileLogging(installation->ownFolder.c_str(), "Update");
  const std::unique_ptr<Transport> transport = makeCurlTransport();
  CommandRequest request{.command = line.command,
                         .installation = *installation,
                         .argument = line.argument,
                         .transport = *transport,
                         .lines = lines};
  if (line.elevates)
    request.elevate = [&](const std::string& draw) {
      return elevateFor(*installation, draw, out, lines);
    };
  return runCommand(request);
}

int runLine(const CommandLine& line) {
  switch (line.kind) {
    case CommandLine::Kind::kHelp:
      std::fputs(help().c_str(), stdout);
      return kExitDone;
    case CommandLine::Kind::kVersion:
      std::printf("quillory-update %s\n", kProgramVersion);
      return kExitDone;
    case CommandLine::Kind::kMistake:
      std::fprintf(stderr, "quillory-update: %s\n\n%s", line.mistake.c_str(), help().c_str());
      return kExitUsage;
    case CommandLine::Kind::kRestart:
      return restartAfter(line.waitFor, line.program, kRestartLimitSeconds) ? kExitDone
                                                                            : kExitFailed;
    case CommandLine::Kind::kProxies:
      return tellProxies(line.argument);
    case CommandLine::Kind::kInstallForAll:
      return installForAll(line, linesOnly());
    case CommandLine::Kind::kCommand:
      break;
  }
  return runOn(line, linesOnly());
}

}  // namespace

int main(int argc, char** argv) {
  fillStandardStreams();
  // An update goes on, also where nobody listens any more.
  outliveReaders();
  cancelOnSignals();
  // The log is the file: standard output is for lines, and the system has its own to tell.
  logCalls.show = [](const char*, std::size_t) {};
  platformCalls.systemLog = [](const char*) {};
  askSystemForProxies();
  return runLine(parseCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}));
}
