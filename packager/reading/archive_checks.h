// What an installation looks for in the archives of a bundle.
#pragma once
#include <string>

#include "packager/reading/plain_archive.h"
#include "packager/reading/program_image.h"
#include "packager/reading/tail_view.h"

namespace quillory::pack {

/// Reports each part whose version the tail has, and whose archive it does not have.
void requireArchives(const TailView& tail, Findings& findings);

/// Reports a program that is not for the launcher's system; scripts run everywhere.
void checkSamePlatform(const std::string& what, const ProgramImage& program,
                       const ProgramImage& launcher, const std::string& file, Findings& findings);

/// The updater and the application: a launch file, and the jars that it names.
void checkProgramArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, Findings& findings);

/// The runtime: java, lib/rt.jar, the bundle's executable.
void checkRuntimeArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, const ProgramImage& launcher, Findings& findings);

}  // namespace quillory::pack
