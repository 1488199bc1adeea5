#include "formats/marker_search.h"

#include <algorithm>

namespace quillory {

std::size_t MarkerSearch::take(std::string_view block) {
  std::size_t at = 0;
  while (at < block.size() && !isFound()) {
    // Most of a program is passed over here.
    if (matched_ == 0) at = std::min(block.find(marker_.front(), at), block.size() - 1);
    // A plain reset: the mismatching byte is not tried as a first byte. Producers know the rule and
    // never put the marker's beginning right before it.
    matched_ = block[at] == marker_[matched_] ? matched_ + 1 : 0;
    ++at;
  }
  return at;
}

}  // namespace quillory
