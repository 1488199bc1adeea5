// Shell commands: the output of one, and text functions that prepare arguments for one.
#pragma once
#include <string>
#include <vector>

namespace quillory {

/// What `command` prints on standard output, less trailing line ends and spaces, in a new block
/// (release with free()); null when it could not be run. Text of any length is returned whole.
char* runCommandGetOutput(const char* command);

/// The same for a program with its arguments (the first is its path, not searched for), without a
/// shell: for paths that a shell would expand. Null when the program could not be started.
char* runProgramGetOutput(const std::vector<std::string>& arguments);

/// `text` itself when `escape` is false, else a new block with a backslash before each space.
char* escapeSpaces(char* text, bool escape);
/// A new block: `text` between double quotes, whether or not it holds spaces.
char* quoteSpaciousString(const char* text);
/// `text` itself when it begins with a double quote, else as quoteSpaciousString().
char* quoteStringIfNecessary(char* text);

}  // namespace quillory
