// A folder for unfinished work, gone with everything in it at the end of the scope.
#pragma once
#include <string>

namespace quillory::pack {

class WorkFolder {
 public:
  /// Made inside `parent`, which is created when missing, so that what is finished can be moved out
  /// with a rename.
  explicit WorkFolder(const std::string& parent);
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& inside) const { return path_ + '/' + inside; }

 private:
  std::string path_;
};

/// Throws PackError when the process has been asked to stop (SIGINT, SIGTERM, SIGHUP), so that work
/// folders are removed on the way out.
void stopIfInterrupted();
void noticeInterruptions();
/// The signal that asked, or 0.
int interruptingSignal();

}  // namespace quillory::pack
