// A folder for unfinished work, gone with everything in it at the end of the scope.
#pragma once
#include <string>

namespace quillory::pack {

class WorkFolder {
 public:
  /// Made inside `parent`, which is created when missing, so that what is finished can be moved out
  /// with a rename. Only this user may look into it. What runs that were killed have left in
  /// `parent` is removed first. Throws PackError, naming `parent`, when it cannot be made.
  explicit WorkFolder(const std::string& parent);
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& inside) const { return path_ + '/' + inside; }

 private:
  std::string path_;
  int lock_ = -1;  ///< held as long as the folder is in use; see abandoned.h
};

/// Throws PackError when the process has been asked to stop (SIGINT, SIGTERM, SIGHUP), so that work
/// folders are removed on the way out.
void stopIfInterrupted();
/// From now on the first of these signals is noticed, and the second ends the process. Those that
/// the process was started to ignore are still ignored.
void noticeInterruptions();
/// The signal that asked, or 0.
int interruptingSignal();

}  // namespace quillory::pack
