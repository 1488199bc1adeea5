// The command lines that give a program rights, and what their results mean. Pure functions: texts
// in, texts out. No text of a request can become a command, an option or a placeholder.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/elevation.h"

namespace quillory {

/// One word of a shell command, whatever the bytes: 'it'\''s'.
std::string shellQuoted(std::string_view text);

/// A text constant of AppleScript: "a \"b\"". Line breaks and tabs become escapes, so that the
/// constant stays on one line; every other byte stays as it is (UTF-8).
std::string appleScriptQuoted(std::string_view text);

/// What macOS asks the user with. Its dialog begins with "osascript wants to make changes", of
/// which a bare name after that says nothing: a name becomes a sentence, a sentence stays.
std::string promptSentence(const std::string& prompt);

/// Runs the command in a shell with rights. osascript itself says only that a command failed, so
/// the shell writes the command's exit status behind its output (see readOsascriptOutput).
std::vector<std::string> osascriptCommand(const std::string& tool, const ElevationRequest& request);

struct OsascriptOutput {
  std::string text;  ///< what the program wrote
  int status;        ///< its exit status
};
/// Nothing when no status stands at the end: the shell did not come to writing it.
std::optional<OsascriptOutput> readOsascriptOutput(std::string_view output);

/// Without the prompt: what pkexec shows is a matter of the system's configuration alone.
std::vector<std::string> pkexecCommand(const std::string& tool, const ElevationRequest& request);

/// pkexec's own statuses become kElevationDenied, all others are the program's.
int statusFromPkexec(int status);

/// Asks for the password on the terminal, with the prompt.
std::vector<std::string> sudoCommand(const std::string& tool, const ElevationRequest& request);

/// Asks, without asking the user, whether he may run the command.
std::vector<std::string> sudoQuestion(const std::string& tool, const ElevationRequest& request);

}  // namespace quillory
