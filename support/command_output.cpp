#include "support/command_output.h"

#include "support/program.h"
#include "support/strings.h"

namespace quillory {
namespace {

char* allocOutput(const std::vector<std::string>& arguments) {
  ProgramOptions options;
  options.output = ProgramOutput::kCaptured;
  ProgramResult program = runProgram(arguments, options);
  if (!program.started) return nullptr;
  // A tab stays, by intent.
  program.output.erase(program.output.find_last_not_of("\n\r ") + 1);
  return allocCopy(program.output.c_str());
}

}  // namespace

char* runCommandGetOutput(const char* command) {
  // The last word is the name that the shell has in its own messages.
  return allocOutput({"/bin/sh", "-c", command, "sh"});
}

char* runProgramGetOutput(const std::vector<std::string>& arguments) {
  return allocOutput(arguments);
}

char* escapeSpaces(char* text, bool escape) {
  if (!escape) return text;
  std::string escaped;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == ' ') escaped += '\\';
    escaped += *c;
  }
  return allocCopy(escaped.c_str());
}

char* quoteSpaciousString(const char* text) {
  return allocCopy(('"' + std::string(text) + '"').c_str());
}

char* quoteStringIfNecessary(char* text) {
  return text[0] == '"' ? text : quoteSpaciousString(text);
}

}  // namespace quillory
