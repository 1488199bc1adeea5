// The file from which the command runner takes its commands: lines of a name, a ':' and a value.
// docs/formats/runner-cfg.md has the format.
#pragma once
#include <cstdio>

#include "runner/argument_list.h"

namespace quillory {

/// In the current directory.
inline constexpr const char* kConfigFile = "runner.cfg";

inline constexpr int kEntryFound = 0;
inline constexpr int kEntryMissing = -1;
inline constexpr int kListFull = -2;

/// Reads `file` to its end, and appends the value of every line that is called `name` to `list`.
///
/// kEntryFound, or kEntryMissing when there was no such line. kListFull when there were more than
/// the list has room for; this is told on standard output, and the list must not be used, as it
/// would be another command. A name or value that is too long for a slot is cut and told too.
int readEntry(std::FILE* file, const char* name, ArgumentList& list);

}  // namespace quillory
