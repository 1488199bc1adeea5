// deleteFolder() of support/files.h. Another user may write to what is deleted, and could exchange
// a folder for a link while it is walked: so no path is followed but name by name, through no link,
// and what is removed is removed from the folder that was opened.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr int kFolderItself = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

class OpenFolder {
 public:
  explicit OpenFolder(int descriptor) : descriptor_(descriptor) {}
  ~OpenFolder() {
    if (descriptor_ != -1) close(descriptor_);
  }
  OpenFolder(OpenFolder&& other) noexcept : descriptor_(other.descriptor_) {
    other.descriptor_ = -1;
  }
  OpenFolder& operator=(OpenFolder&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  bool isOpen() const { return descriptor_ != -1; }
  int get() const { return descriptor_; }
  OpenFolder sub(const std::string& name) const {
    return OpenFolder(openat(descriptor_, name.c_str(), kFolderItself));
  }

 private:
  int descriptor_;
};

// As listForWalk(), of a folder that is open.
std::vector<std::string> namesToWalk(const OpenFolder& folder) {
  const int own = openat(folder.get(), ".", kFolderItself);
  const OwnedFolder listing(own == -1 ? nullptr : fdopendir(own));
  std::vector<std::string> names;
  while (const dirent* entry = listing == nullptr ? nullptr : readdir(listing.get())) {
    const std::string name = entry->d_name;
    if (!name.starts_with('.') || name.size() > 2) names.push_back(name);
  }
  return names;
}

class Deletion {
 public:
  explicit Deletion(const char* top) : top_(top) {}

  /// Empties the folder that the walk is in. False, with a line, when it cannot be opened.
  bool empty(const std::string& path) {
    std::optional<OpenFolder> folder = here();
    if (!folder) {
      logMessage("[DeleteFolder] Deleting from '%s' is NULL\n", path.c_str());
      return false;
    }
    const std::vector<std::string> names = namesToWalk(*folder);
    // A deep walk would otherwise hold an open folder a level.
    folder.reset();
    for (const std::string& name : names) remove(name, joinPath(path.c_str(), name));
    return true;
  }

 private:
  /// Opened anew each time, name by name.
  std::optional<OpenFolder> here() const {
    OpenFolder folder(open(top_, kFolderItself));
    for (const std::string& name : names_)
      if (folder.isOpen()) folder = folder.sub(name);
    if (!folder.isOpen()) return std::nullopt;
    return folder;
  }

  void remove(const std::string& name, const std::string& path) {
    std::optional<OpenFolder> folder = here();
    if (!folder || !folder->sub(name).isOpen()) {
      removeFile(folder, name, path);
      return;
    }
    folder.reset();
    removeFolder(name, path);
  }

  // A link is a file, wherever it leads: what is behind it belongs to somebody else.
  static void removeFile(const std::optional<OpenFolder>& folder, const std::string& name,
                         const std::string& path) {
    logMessage("Deleting FILE %s\n", path.c_str());
    // A folder that cannot be opened may be empty.
    const bool isGone = folder && (unlinkat(folder->get(), name.c_str(), 0) == 0 ||
                                   unlinkat(folder->get(), name.c_str(), AT_REMOVEDIR) == 0);
    if (!isGone) logMessage("Failed to delete file %s\n", path.c_str());
  }

  void removeFolder(const std::string& name, const std::string& path) {
    logMessage("Deleting DIR %s\n", path.c_str());
    names_.push_back(name);
    const bool isEmptied = empty(path);
    names_.pop_back();
    if (!isEmptied) {
      logMessage("Failed to delete %s\n", path.c_str());
      return;
    }
    // It may still hold what could not be removed, which has been logged.
    const std::optional<OpenFolder> folder = here();
    if (folder) unlinkat(folder->get(), name.c_str(), AT_REMOVEDIR);
  }

  const char* top_;
  std::vector<std::string> names_;  // from the top to where the walk is
};

}  // namespace

int deleteFolder(const char* folder) { return Deletion(folder).empty(folder) ? 0 : 1; }

}  // namespace quillory
