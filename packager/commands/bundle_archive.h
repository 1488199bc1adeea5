// The file that people download: the bundle, and for Linux what a desktop wants beside it.
#pragma once
#include <string>

#include "packager/config/config.h"
#include "packager/reading/target.h"

namespace quillory::pack {

/// Packs the finished bundle as "<name>-<display version>-<target>.zip" for macOS and ".tar.xz" for
/// Linux into `folder`, and returns its path. For Linux it holds a folder with the bundle, a menu
/// entry, an icon where there is one, and install.sh. An earlier file of the name is replaced when
/// the new one is whole. Throws PackError.
std::string writeBundleArchive(const Config& config, const std::string& bundle, Target target,
                               const std::string& folder);

}  // namespace quillory::pack
