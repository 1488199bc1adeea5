#include "packager/report/nearest_name.h"

#include <algorithm>
#include <cctype>

namespace quillory::pack {
namespace {

// Letters wrong, missing, added or exchanged with their neighbour.
std::size_t mistakesBetween(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + change});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[a.size()][b.size()];
}

// mainClass and main_class are main-class.
std::string normalised(const std::string& name) {
  std::string plain;
  for (const char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return plain;
}

}  // namespace

std::string nearestName(const std::string& name, const std::vector<std::string>& known) {
  std::string best;
  std::size_t fewest = std::max<std::size_t>(2, name.size() / 3) + 1;
  for (const std::string& candidate : known) {
    const std::size_t mistakes = mistakesBetween(normalised(name), normalised(candidate));
    if (mistakes < fewest && mistakes < candidate.size()) {
      fewest = mistakes;
      best = candidate;
    }
  }
  return best;
}

}  // namespace quillory::pack
