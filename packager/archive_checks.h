// What an installation looks for in the archives of a bundle.
#pragma once
#include <string>

#include "packager/plain_archive.h"

namespace quillory::pack {

/// Bytes that tell programs of different systems apart.
inline constexpr std::size_t kMagicBytes = 8;

/// Reports a program that is not one for `expected` ("macOS", "Linux"); scripts run everywhere.
void checkSamePlatform(const std::string& what, const std::string& firstBytes,
                       const std::string& expected, const std::string& file, Findings& findings);

/// The updater and the application: a launch file, and the jars that it names.
void checkProgramArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, Findings& findings);

/// The runtime: java, lib/rt.jar, the bundle's executable.
void checkRuntimeArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, const std::string& platform, Findings& findings);

}  // namespace quillory::pack
