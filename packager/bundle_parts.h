// What a bundle is put together from: files beside this program, and the three trees of content.
#pragma once
#include <string>
#include <vector>

#include "packager/config.h"
#include "packager/content_tree.h"

namespace quillory::pack {

/// Files that every bundle carries, found in the configuration or beside this program.
struct BundleTools {
  std::string launcher;
  std::string lzma64;
  std::string updaterJar;
  std::string elevMac;  ///< "" when there is none
};
BundleTools findBundleTools(const Config& config);

/// The jars of the application, patterns resolved, in class path order. Throws RejectedInput when a
/// pattern matches nothing.
std::vector<std::string> findJars(const Config& config);

ContentTree updaterContent(const Config& config, const BundleTools& tools);
ContentTree applicationContent(const Config& config, const std::vector<std::string>& jars);

/// Names that an installation needs for itself.
Findings lintApplicationPaths(const ContentTree& tree);

/// What the jars, pictures and other named files should be and are not.
Findings lintFiles(const Config& config, const std::vector<std::string>& jars);

}  // namespace quillory::pack
