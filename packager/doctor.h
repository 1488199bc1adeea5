// Looks at a finished bundle with the eyes of a user's machine.
#pragma once
#include <string>

#include "packager/findings.h"

namespace quillory::pack {

/// What would go wrong, and why. Findings that are notes are worth knowing only.
Findings diagnose(const std::string& bundle);

}  // namespace quillory::pack
