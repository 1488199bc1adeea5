// What a bundle is put together from: the jars, and the trees of content.
#pragma once
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/content/bundle_tools.h"
#include "packager/content/content_tree.h"

namespace quillory::pack {

/// The jars of the application, patterns resolved, in class path order. Throws RejectedInput when a
/// pattern matches nothing.
std::vector<std::string> findJars(const Config& config);

/// Throws RejectedInput when what the configuration names as the updater has no class to start, and
/// PackError when that is so of our own.
ContentTree updaterContent(const Config& config, const BundleTools& tools);
ContentTree applicationContent(const Config& config, const std::vector<std::string>& jars);

/// Names that an installation needs for itself.
Findings lintApplicationPaths(const ContentTree& tree);

/// What the jars, pictures and other named files should be and are not.
Findings lintFiles(const Config& config, const std::vector<std::string>& jars);

}  // namespace quillory::pack
