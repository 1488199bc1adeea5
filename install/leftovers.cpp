#include "install/leftovers.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "install/replacement.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr std::string_view kDigits = "0123456789";

// Takes a number off the front; false without one.
bool skipNumber(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_not_of(kDigits), text.size());
  text.remove_prefix(end);
  return end > 0;
}

bool skip(std::string_view& text, std::string_view part) {
  if (!text.starts_with(part)) return false;
  text.remove_prefix(part.size());
  return true;
}

bool isTemporaryName(std::string_view name) {
  return skip(name, "QuilloryTemp-") && skipNumber(name) && skip(name, "-") && skipNumber(name) &&
         name == "-app";
}

bool isPartialVersionFile(std::string_view name) {
  constexpr std::string_view kBeforeProcess = "-version.txt.";
  const std::size_t at = name.rfind(kBeforeProcess);
  if (!name.starts_with("Quillory-") || at == name.npos) return false;
  name.remove_prefix(at + kBeforeProcess.size());
  return skipNumber(name) && name == ".part";
}

// The second is what earlier versions called theirs.
bool isUnfinishedFile(std::string_view name) {
  if (name.starts_with(kUnfinishedPrefix)) return true;
  return skip(name, ".java-") && skipNumber(name) && name.empty();
}

bool isPlainFile(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

template <typename IsLeftover>
void clearFiles(const std::string& folder, IsLeftover isLeftover) {
  if (!isRealFolder(folder)) return;
  for (const std::string& name : namesIn(folder)) {
    const std::string path = joinPath(folder, name);
    if (!isLeftover(name) || !isPlainFile(path) || unlink(path.c_str()) != 0) continue;
    logMessage("[Extractor] Removed %s, which an earlier start had left\n", path.c_str());
  }
}

void clearTemporaryFolder(const std::string& path) {
  if (!isRealFolder(path) || !removeTree(path)) return;
  logMessage("[Extractor] Removed %s, which an earlier start had left\n", path.c_str());
}

void clearComponent(const std::string& component) {
  if (!isRealFolder(component)) return;
  clearFiles(component, isPartialVersionFile);
  clearUnfinishedFiles(joinPath(component, "bin"));
  if (isRealFolder(joinPath(component, "lib")))
    clearUnfinishedFiles(joinPath(component, "lib", "security"));
}

}  // namespace

bool hasLeftovers(const std::string& masterFolder) {
  const std::vector<std::string> names = namesIn(masterFolder);
  return std::any_of(names.begin(), names.end(), isTemporaryName) ||
         isAnythingSetAside(masterFolder);
}

void clearLeftovers(const std::string& masterFolder) {
  bringBackWhatWasSetAside(masterFolder);
  for (const std::string& name : namesIn(masterFolder)) {
    const std::string path = joinPath(masterFolder, name);
    if (isTemporaryName(name)) clearTemporaryFolder(path);
    if (name.starts_with("Quillory-") && name.ends_with("-complete")) clearComponent(path);
  }
}

void clearUnfinishedFiles(const std::string& folder) { clearFiles(folder, isUnfinishedFile); }

}  // namespace quillory
