// Lists as people read them.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// The words with `between` between them.
inline std::string joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : between) + word;
  }
  return text;
}

}  // namespace quillory::pack
