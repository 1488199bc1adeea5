// Runs the tools of the JDK, and others of the system, and waits for them.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// What `command` printed, on both outputs as it came; its first text is the path of a program.
/// Throws PackError, with the last lines of it, when it cannot be started or ends with another
/// status than 0.
std::string runTool(const std::vector<std::string>& command);

/// The path of a program in PATH, or "".
std::string findInPath(const std::string& name);

/// The path of a JDK tool: in `jdk` when given, else under JAVA_HOME, else in PATH. Throws
/// PackError when there is none.
std::string findJdkTool(const std::string& name, const std::string& jdk);

/// How such a tool is started that is written in Java: with what makes a JVM ready soonest. Its
/// second of work is over before a better compiler would have paid. Throws as findJdkTool() does.
std::vector<std::string> jdkToolCommand(const std::string& name, const std::string& jdk);

}  // namespace quillory::pack
