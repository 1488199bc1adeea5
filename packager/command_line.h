// The command line of quillory-pack.
#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace quillory::pack {

/// Statuses that the program ends with; docs/packaging.md lists them.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;         ///< it could not be done, or what was checked is not good
inline constexpr int kWrongUse = 2;       ///< the command line makes no sense
inline constexpr int kRejectedInput = 3;  ///< the configuration or the content has errors

/// Runs one command. `terminal`: `err` is a terminal, so that a progress bar may be drawn.
int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   bool terminal);

}  // namespace quillory::pack
