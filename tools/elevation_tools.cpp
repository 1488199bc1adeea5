#include "tools/elevation_tools.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "support/program.h"

namespace quillory {
namespace {

constexpr int kSignalBase = 128;
constexpr int kNotStarted = -1;

int statusOf(const ProgramResult& program) {
  if (program.signal != 0) return kSignalBase + program.signal;
  return program.exited ? program.status : kNotStarted;
}

ProgramResult run(const std::vector<std::string>& command, ProgramOutput output) {
  ProgramOptions options;
  options.output = output;
  return runProgram(command, options);
}

void complainIfNotStarted(const std::vector<std::string>& command, const ProgramResult& program) {
  if (!program.started)
    complain(command[0] + " cannot be started: " + std::strerror(program.error));
}

}  // namespace

void complain(const std::string& message) {
  std::fprintf(stderr, "elev_mac: %s\n", message.c_str());
}

bool isRootForReal() { return getuid() == 0 && geteuid() == 0; }

std::string findTool(const std::vector<std::string>& folders, const std::string& name) {
  for (const std::string& folder : folders) {
    const std::string path = folder + '/' + name;
    struct stat found;
    if (stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) &&
        access(path.c_str(), X_OK) == 0)
      return path;
  }
  return "";
}

int runToolForStatus(const std::vector<std::string>& command) {
  const ProgramResult program = run(command, ProgramOutput::kInherited);
  complainIfNotStarted(command, program);
  return statusOf(program);
}

int runToolForOutput(const std::vector<std::string>& command, std::string& output) {
  ProgramResult program = run(command, ProgramOutput::kCaptured);
  complainIfNotStarted(command, program);
  output = std::move(program.output);
  return statusOf(program);
}

int runToolQuietly(const std::vector<std::string>& command) {
  return statusOf(run(command, ProgramOutput::kDiscarded));
}

}  // namespace quillory
