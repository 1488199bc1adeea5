#include "tests/packager/project_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "packager/cli/command_line.h"

namespace quillory::testing {

CommandResult pack(std::vector<std::string> arguments) {
  if (!arguments.empty() && arguments[0] == "bundle" &&
      std::find(arguments.begin(), arguments.end(), "--target") == arguments.end()) {
    arguments.insert(arguments.end(), {"--target", "linux"});
  }
  std::ostringstream out, err;
  const int status = quillory::pack::runCommandLine(arguments, out, err, false);
  return {status, out.str(), err.str()};
}

std::string bundleOf(const Project& project, const std::string& config) {
  const CommandResult result = pack({"bundle", "-q", project.writeConfig(config)});
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out.substr(0, result.out.find('\n'));
}

}  // namespace quillory::testing
