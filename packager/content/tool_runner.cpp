#include "packager/content/tool_runner.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "support/program.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kShownOutput = 2000;

bool isExecutable(const std::string& path) { return access(path.c_str(), X_OK) == 0; }

std::string lastPartOf(const std::string& output) {
  return output.size() <= kShownOutput ? output : output.substr(output.size() - kShownOutput);
}

}  // namespace

std::string runTool(const std::vector<std::string>& command) {
  ProgramOptions options;
  options.output = ProgramOutput::kBothCaptured;
  const ProgramResult tool = runProgram(command, options);
  if (!tool.started) {
    throwFileError(command.at(0), "cannot be started", tool.error);
  }
  stopIfInterrupted();  // the tool was, too: its failure is none of its own
  if (tool.status != 0) {
    throw PackError(command[0] + " failed" +
                    (tool.exited ? " with status " + std::to_string(tool.status) : std::string()) +
                    ":\n" + lastPartOf(tool.output));
  }
  return tool.output;
}

std::string findInPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!folder.empty() && isExecutable(folder + '/' + name)) {
      return folder + '/' + name;
    }
  }
  return "";
}

std::string findJdkTool(const std::string& name, const std::string& jdk) {
  const char* javaHome = std::getenv("JAVA_HOME");
  const std::string home = !jdk.empty() ? jdk : javaHome ? javaHome : "";
  if (!home.empty()) {
    const std::string tool = home + "/bin/" + name;
    if (isExecutable(tool)) {
      return tool;
    }
    throw PackError("there is no " + name + " in " + home + "/bin",
                    "set runtime.jdk or JAVA_HOME to the folder of a JDK");
  }
  if (const std::string tool = findInPath(name); !tool.empty()) {
    return tool;
  }
  throw PackError("there is no " + name + " in PATH",
                  "install a JDK, or name one with runtime.jdk or JAVA_HOME");
}

std::vector<std::string> jdkToolCommand(const std::string& name, const std::string& jdk) {
  return {findJdkTool(name, jdk), "-J-XX:+IgnoreUnrecognizedVMOptions", "-J-XX:TieredStopAtLevel=1",
          "-J-XX:+UseSerialGC"};
}

}  // namespace quillory::pack
