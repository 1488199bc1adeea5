// The command line of quillory-pack.
#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace quillory::pack {

/// Runs one command. `terminal`: `err` is a terminal, so that a progress bar may be drawn.
int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   bool terminal);

}  // namespace quillory::pack
