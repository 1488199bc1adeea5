// Looks at a finished bundle with the eyes of a user's machine.
#pragma once
#include <string>

#include "packager/commands/command.h"
#include "packager/reading/program_image.h"
#include "packager/report/findings.h"

namespace quillory::pack {

struct Diagnosis {
  ProgramImage launcher;
  Findings findings;  ///< what would go wrong, and why; notes are worth knowing only
};

/// Throws PackError when there is no bundle at this path.
Diagnosis diagnose(const std::string& bundle);

/// "doctor": prints it; fails when something would keep the bundle from working.
Command doctorCommand();

}  // namespace quillory::pack
