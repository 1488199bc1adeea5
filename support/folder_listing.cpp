#include "support/folder_listing.h"

#include <dirent.h>

#include <algorithm>
#include <string_view>

#include "support/owned.h"

namespace quillory {
namespace {

// Every entry, in the order in which the system tells them.
std::optional<std::vector<std::string>> entriesOf(const std::string& folder) {
  const OwnedFolder open(opendir(folder.c_str()));
  if (open == nullptr) return std::nullopt;
  std::vector<std::string> names;
  while (const dirent* entry = readdir(open.get())) names.emplace_back(entry->d_name);
  return names;
}

bool isLeftOut(std::string_view name) { return name.starts_with('.') && name.size() < 3; }

}  // namespace

std::optional<std::vector<std::string>> listFolder(const std::string& folder) {
  auto names = entriesOf(folder);
  if (!names) return std::nullopt;
  std::erase(*names, ".");
  std::erase(*names, "..");
  std::sort(names->begin(), names->end());
  return names;
}

std::vector<std::string> namesIn(const std::string& folder) {
  return listFolder(folder).value_or(std::vector<std::string>());
}

long countEntries(const std::string& folder) {
  const auto entries = entriesOf(folder);
  return entries ? static_cast<long>(entries->size()) : 0;
}

std::optional<std::vector<std::string>> listForWalk(const std::string& folder) {
  auto names = entriesOf(folder);
  if (names) std::erase_if(*names, isLeftOut);
  return names;
}

}  // namespace quillory
