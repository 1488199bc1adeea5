// Looks at a finished bundle with the eyes of a user's machine.
#pragma once
#include <string>

#include "packager/reading/program_image.h"
#include "packager/report/findings.h"

namespace quillory::pack {

struct Diagnosis {
  ProgramImage launcher;
  Findings findings;  ///< what would go wrong, and why; notes are worth knowing only
};

Diagnosis diagnose(const std::string& bundle);

}  // namespace quillory::pack
