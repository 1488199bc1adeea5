// The files under an application's update URL: for each part its version and its archive.
#pragma once
#include <string>

namespace quillory::pack {

/// Adds Quillory-<name>-version.txt and Quillory-<name>-<version>-archive.p2.l2 to `folder`, which
/// is created, and flushed by who gives it its name. `archive` is copied.
void addRelease(const std::string& folder, const std::string& name, const std::string& version,
                const std::string& archive);

}  // namespace quillory::pack
