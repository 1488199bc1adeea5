// Content on the disk, as an installation would have it.
#pragma once
#include <string>

#include "packager/content/content_tree.h"

namespace quillory::pack {

/// Makes `folder`, and in it copies of all that is in the tree. Throws PackError when something
/// cannot be read or written; what is there by then stays.
void copyContent(const ContentTree& tree, const std::string& folder);

}  // namespace quillory::pack
