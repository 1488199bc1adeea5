#include "packager/commands/launcher_log.h"

#include <cstdio>

namespace quillory::pack {
namespace {

void showNowhere(const char*, std::size_t) {}

void showOnStandardError(const char* line, std::size_t length) {
  std::fwrite(line, 1, length, stderr);
}

}  // namespace

LauncherLog::LauncherLog(bool shown)
    : showBefore_(logCalls.show), systemLogBefore_(platformCalls.systemLog) {
  logCalls.show = shown ? showOnStandardError : showNowhere;
  // Every message comes to the system log too; one copy is enough.
  platformCalls.systemLog = [](const char*) {};
}

LauncherLog::~LauncherLog() {
  logCalls.show = showBefore_;
  platformCalls.systemLog = systemLogBefore_;
}

}  // namespace quillory::pack
