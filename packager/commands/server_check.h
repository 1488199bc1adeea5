// Looks at a server of release files: what clients need of it, and what it costs them where it is
// not there.
#pragma once
#include <string>

#include "packager/commands/trusted_keys.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// Asks the server at `url` for the release list, and for a byte of every file that it names.
/// Throws PackError as askServer() does.
Findings checkServer(const std::string& url, const Trusted& trusted);

}  // namespace quillory::pack
