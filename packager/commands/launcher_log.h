// The log of the launcher's own code, where this program uses it.
#pragma once
#include "support/log.h"
#include "support/platform.h"

namespace quillory::pack {

/// Until the end of the scope the log goes to standard error, or nowhere when `shown` is false:
/// standard output belongs to the results of this program. One at a time.
class LauncherLog {
 public:
  explicit LauncherLog(bool shown);
  ~LauncherLog();
  LauncherLog(const LauncherLog&) = delete;
  LauncherLog& operator=(const LauncherLog&) = delete;

 private:
  decltype(LogCalls::show) showBefore_;
  decltype(Platform::systemLog) systemLogBefore_;
};

}  // namespace quillory::pack
