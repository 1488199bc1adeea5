// How often something is said.
#pragma once
#include <string>

namespace quillory::testing {

/// How many places of `text` begin with `part`.
inline int countOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace quillory::testing
