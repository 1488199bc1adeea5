#include "tools/elevation.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/process.h"
#include "support/strings.h"
#include "tools/elevation_tools.h"

namespace quillory {
namespace {

int failOnProgram(const std::string& program, int error) {
  complain(program + " cannot be executed: " + std::strerror(error));
  return kElevationNoProgram;
}

/// Why it is of no use to ask for rights, as far as this user can see; else 0.
int errorOf(const std::string& program) {
  struct stat found;
  if (stat(program.c_str(), &found) != 0) return errno == EACCES ? 0 : errno;
  const bool anyoneMayExecute = (found.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
  return S_ISREG(found.st_mode) && anyoneMayExecute ? 0 : EACCES;
}

int becomeProgram(const std::vector<std::string>& command) {
  execve(command[0].c_str(), argumentPointers(command).data(), getEnvP());
  return failOnProgram(command[0], errno);
}

}  // namespace

int runWithRights(const ElevationRequest& request, const Surroundings& surroundings) {
  if (surroundings.isRoot) return becomeProgram(request.command);
  if (const int error = errorOf(request.command[0]); error != 0)
    return failOnProgram(request.command[0], error);
  return askForRights(request, surroundings);
}

}  // namespace quillory
