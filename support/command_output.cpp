#include "support/command_output.h"

#include <utility>

#include "support/program.h"

namespace quillory {

std::optional<std::string> outputOfCommand(const std::string& command) {
  // The last word is the name that the shell has in its own messages.
  return outputOfProgram({"/bin/sh", "-c", command, "sh"});
}

std::optional<std::string> outputOfProgram(const std::vector<std::string>& arguments) {
  ProgramOptions options;
  options.output = ProgramOutput::kCaptured;
  ProgramResult program = runProgram(arguments, options);
  if (!program.started) return std::nullopt;
  // A tab stays, by intent.
  program.output.erase(program.output.find_last_not_of("\n\r ") + 1);
  return std::move(program.output);
}

}  // namespace quillory
