// What a shell command or a program prints.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory {

/// What `command` prints on standard output, however long, less trailing line ends and spaces;
/// nothing when it could not be run.
std::optional<std::string> outputOfCommand(const std::string& command);

/// The same for a program with its arguments (the first is its path, not searched for), without a
/// shell: for paths that a shell would expand. Nothing when the program could not be started.
std::optional<std::string> outputOfProgram(const std::vector<std::string>& arguments);

}  // namespace quillory
