#include "support/folder_listing.h"

#include <dirent.h>

#include <memory>

namespace quillory {
namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

bool isLeftOut(std::string_view name) { return name.starts_with('.') && name.size() < 3; }

}  // namespace

std::optional<std::vector<std::string>> listFolder(const char* folder) {
  const std::unique_ptr<DIR, FolderCloser> open(opendir(folder));
  if (open == nullptr) return std::nullopt;
  std::vector<std::string> names;
  while (const dirent* entry = readdir(open.get())) names.emplace_back(entry->d_name);
  return names;
}

std::optional<std::vector<std::string>> listForWalk(const char* folder) {
  auto names = listFolder(folder);
  if (names) std::erase_if(*names, isLeftOut);
  return names;
}

}  // namespace quillory
