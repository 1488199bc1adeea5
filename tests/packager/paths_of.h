// Trees of content as tests ask about them: by their paths.
#pragma once
#include <string>
#include <vector>

#include "packager/content/content_tree.h"

namespace quillory::testing {

/// Its paths, in order.
inline std::vector<std::string> pathsOf(const pack::ContentTree& tree) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : tree.entries()) {
    paths.push_back(path);
  }
  return paths;
}

}  // namespace quillory::testing
