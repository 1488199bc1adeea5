#include "tools/elevation_commands.h"

namespace quillory {
namespace {

std::string shellCommand(const std::vector<std::string>& command) {
  std::string line;
  for (const std::string& word : command) {
    if (!line.empty()) line += ' ';
    line += shellQuoted(word);
  }
  return line;
}

std::vector<std::string> followedBy(std::vector<std::string> start,
                                    const std::vector<std::string>& command) {
  start.insert(start.end(), command.begin(), command.end());
  return start;
}

/// sudo replaces placeholders in its prompt, such as %h by the name of the machine.
std::string sudoPrompt(std::string_view text) {
  std::string prompt;
  for (const char c : text) prompt += c == '%' ? "%%" : std::string(1, c);
  return prompt + ": ";
}

}  // namespace

std::string shellQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted + '\'';
}

std::string appleScriptQuoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    switch (c) {
      case '\n':
        quoted += "\\n";
        break;
      case '\r':
        quoted += "\\r";
        break;
      case '\t':
        quoted += "\\t";
        break;
      case '"':
      case '\\':
        quoted += '\\';
        [[fallthrough]];
      default:
        quoted += c;
    }
  }
  return quoted + '"';
}

std::string promptSentence(const std::string& prompt) {
  const bool isSentence = prompt.find(' ') != prompt.npos && prompt.ends_with('.');
  return isSentence ? prompt : prompt + " is to be installed for all users of this Mac.";
}

std::vector<std::string> osascriptCommand(const std::string& tool,
                                          const ElevationRequest& request) {
  // Standard error would be lost: only an error's message shows it.
  const std::string command = shellCommand(request.command) + " 2>&1; printf '\\n%s' \"$?\"";
  return {tool, "-e",
          "do shell script " + appleScriptQuoted(command) + " with prompt " +
              appleScriptQuoted(promptSentence(request.prompt)) +
              " with administrator privileges without altering line endings"};
}

std::optional<OsascriptOutput> readOsascriptOutput(std::string_view output) {
  constexpr std::size_t kLongestStatus = 3;
  while (!output.empty() && output.back() == '\n') output.remove_suffix(1);
  const std::size_t end = output.rfind('\n');
  if (end == output.npos) return std::nullopt;
  const std::string digits(output.substr(end + 1));
  if (digits.empty() || digits.size() > kLongestStatus ||
      digits.find_first_not_of("0123456789") != digits.npos)
    return std::nullopt;
  return OsascriptOutput{std::string(output.substr(0, end)), std::stoi(digits)};
}

std::vector<std::string> pkexecCommand(const std::string& tool, const ElevationRequest& request) {
  return followedBy({tool}, request.command);
}

int statusFromPkexec(int status) {
  constexpr int kDismissed = 126;
  constexpr int kNotAuthorized = 127;
  return status == kDismissed || status == kNotAuthorized ? kElevationDenied : status;
}

std::vector<std::string> sudoCommand(const std::string& tool, const ElevationRequest& request) {
  return followedBy({tool, "-p", sudoPrompt(request.prompt), "--"}, request.command);
}

std::vector<std::string> sudoQuestion(const std::string& tool, const ElevationRequest& request) {
  return followedBy({tool, "-n", "-l", "--"}, request.command);
}

}  // namespace quillory
