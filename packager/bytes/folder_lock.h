// One maker of releases at a time in a folder: numbers are counted there, and lists are made from
// those that lie there.
#pragma once
#include <functional>
#include <string>

namespace quillory::pack {

class FolderLock {
 public:
  /// Holds the lock of `folder`; one that is not there has none. It ends with this object, and with
  /// the process in any way. Waits as long as another one has it, having called `onWait` once;
  /// an interruption ends that as stopIfInterrupted() does. A file system without locks has none.
  /// Throws PackError where the folder cannot be opened.
  FolderLock(const std::string& folder, const std::function<void()>& onWait);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int folder_ = -1;
};

}  // namespace quillory::pack
