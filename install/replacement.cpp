#include "install/replacement.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "support/durable.h"
#include "support/exchange.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/paths.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

constexpr char kAsideFolder[] = ".replaced";
constexpr mode_t kOnlyOwnerWrites = 0755;

bool isNothing(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) != 0 && errno == ENOENT;
}

bool move(const std::string& from, const std::string& to) {
  return inTwoTries([&] { return std::rename(from.c_str(), to.c_str()) == 0; });
}

// A folder that waits aside, brought back to its place unless it is dropped.
class SetAside {
 public:
  explicit SetAside(const std::string& place) : place_(place) {
    const std::filesystem::path path(place);
    folder_ = joinPath(path.parent_path().string(), kAsideFolder);
    aside_ = joinPath(folder_, path.filename().string());
    (void)mkdir(folder_.c_str(), kOnlyOwnerWrites);
    // A link that was planted there would lead elsewhere.
    if (!isRealFolder(folder_)) return;
    removeTree(aside_);
    isAside_ = move(place_, aside_);
  }
  ~SetAside() {
    if (isAside_) (void)move(aside_, place_);
    rmdir(folder_.c_str());
  }
  SetAside(const SetAside&) = delete;
  SetAside& operator=(const SetAside&) = delete;

  bool isAside() const { return isAside_; }
  void drop() {
    isAside_ = false;
    syncFolder(folder_.substr(0, folder_.rfind('/')));
    removeTree(aside_);
  }

 private:
  std::string place_;
  std::string folder_;
  std::string aside_;
  bool isAside_ = false;
};

std::string parentOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

// Afterwards `fresh` is the old folder. False where the two cannot be exchanged.
bool exchange(const std::string& fresh, const std::string& place) {
  if (exchangeCalls.exchange(fresh.c_str(), place.c_str()) != 0) return false;
  // Before the old one is deleted, which must not reach the disk first.
  syncFolder(parentOf(place));
  return true;
}

// Deletes the old folder, which is at `fresh` now, and says what doRename() says, in its order.
void finishExchange(const std::string& fresh, const std::string& place) {
  printWorkingDir();
  doesFileExist(place.c_str());
  logMessage("[Rename] The target already exists. Deleting.\n");
  deleteFolder(fresh.c_str());
  removeTree(fresh);
  logMessage("[Rename] File '%s' renamed to '%s'\n", fresh.c_str(), place.c_str());
}

}  // namespace

bool replaceFolder(const std::string& fresh, const std::string& place) {
  syncTree(fresh);
  // What is empty needs not be kept, and a folder can be renamed onto it in one step.
  if (move(fresh, place)) return true;
  if (!isRealFolder(place)) return false;
  if (exchange(fresh, place)) {
    removeTree(fresh);
    return true;
  }
  SetAside old(place);
  if (!old.isAside() || !move(fresh, place)) return false;
  old.drop();
  return true;
}

void putInPlace(const std::string& fresh, const std::string& place, Durability durability) {
  if (durability == Durability::kFlushed) syncTree(fresh);
  if (!isRealFolder(place)) {
    doRename(fresh.c_str(), place.c_str());
    return;
  }
  if (exchange(fresh, place)) {
    finishExchange(fresh, place);
    return;
  }
  SetAside old(place);
  doRename(fresh.c_str(), place.c_str());
  if (old.isAside() && isRealFolder(place)) old.drop();
}

bool isAnythingSetAside(const std::string& masterFolder) {
  return isRealFolder(joinPath(masterFolder, kAsideFolder));
}

void bringBackWhatWasSetAside(const std::string& masterFolder) {
  const std::string folder = joinPath(masterFolder, kAsideFolder);
  if (!isRealFolder(folder)) return;
  for (const std::string& name : namesIn(folder)) {
    const std::string aside = joinPath(folder, name);
    const std::string place = joinPath(masterFolder, name);
    if (isNothing(place) && move(aside, place)) {
      logMessage("[Extractor] Brought back %s, which an earlier start had set aside\n",
                 name.c_str());
    } else {
      removeTree(aside);
    }
  }
  rmdir(folder.c_str());
}

}  // namespace quillory
