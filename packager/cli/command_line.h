// The command line of quillory-pack.
#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace quillory::pack {

/// Runs one command and returns its exit status; `arguments` are without the program's name. What
/// a command throws is reported, to `err` or in the document of --json on `out`, and gives status 1
/// or 3; nothing is thrown. `terminal`: `err` is one, so that a progress bar may be drawn.
int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   bool terminal);

}  // namespace quillory::pack
