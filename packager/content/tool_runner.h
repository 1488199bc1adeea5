// Runs the tools of the JDK and waits for them.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// What `command` printed, on both outputs. Throws PackError, with the last lines of it, when it
/// cannot be started or ends with another status than 0. `scratchFolder` takes its output
/// meanwhile.
std::string runTool(const std::vector<std::string>& command, const std::string& scratchFolder);

/// The path of a JDK tool: in `jdk` when given, else under JAVA_HOME, else in PATH. Throws
/// PackError when there is none.
std::string findJdkTool(const std::string& name, const std::string& jdk);

}  // namespace quillory::pack
