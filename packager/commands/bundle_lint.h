// What a configuration names on this machine, and the content made of it: why it cannot be packed.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/bundle_parts.h"
#include "packager/config/config.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// What the jars, pictures and other named files should be and are not.
Findings lintFiles(const Config& config, const std::vector<std::string>& jars);

/// What Info.plist of a bundle for macOS is to say and cannot, or says more widely than it should.
Findings lintMacPlist(const Config& config);

/// The application's paths that its installation needs for itself.
Findings lintApplicationPaths(const ContentTree& application);

/// What is in the parts and must not be: paths that no installation can have or that it needs for
/// itself, the signing key, and `output`, the folder for the results.
Findings lintParts(const Config& config, const BundleParts& parts, const std::string& output);

}  // namespace quillory::pack
