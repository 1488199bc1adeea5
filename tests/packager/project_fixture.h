// The whole program as tests run it: command lines, and bundles made by them.
#pragma once
#include <string>
#include <vector>

#include "tests/packager/project.h"
#include "tests/packager/rules_of.h"

namespace quillory::testing {

/// What a configuration says of the runtime that a project has.
inline constexpr char kRuntime[] = "[runtime]\nfolder = \"jre\"\n";

struct CommandResult {
  int status = 0;
  std::string out;
  std::string err;
};

/// A run of the command line in this process. Bundles are for Linux, as the stand-ins are, unless
/// --target says otherwise.
CommandResult pack(std::vector<std::string> arguments);
/// The path of the bundle that a project makes from this configuration, in its folder dist; a test
/// failure when it makes none.
std::string bundleOf(const Project& project, const std::string& config);

}  // namespace quillory::testing
