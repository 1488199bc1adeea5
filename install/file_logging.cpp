#include "install/file_logging.h"

#include <time.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "support/clock.h"
#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

// "<date>-<time>-<millis>" in local time, from one reading of the clock.
std::string fileStamp() {
  const std::uint64_t now = timeCalls.nowMillis();
  const time_t seconds = static_cast<time_t>(now / 1000);
  tm local{};
  localtime_r(&seconds, &local);
  char date[64];
  strftime(date, sizeof date, "%Y-%m-%d-%H-%M-%S", &local);
  char stamp[80];
  std::snprintf(stamp, sizeof stamp, "%s-%03d", date, static_cast<int>(now % 1000));
  return stamp;
}

}  // namespace

void setupFileLogging(const char* masterFolder) {
  const std::string name = "Wrapper-" + fileStamp() + ".log";
  std::string folder(masterFolder);
  makeDir(folder.c_str());
  if (!folder.ends_with('/')) folder += '/';
  folder += "logs";
  makeDir(folder.c_str());
  const std::string path = folder + '/' + name;
  logMessage("[Extractor] Logging to %s\n", path.c_str());
  setFileToLogTo(std::fopen(path.c_str(), "w"));
}

}  // namespace quillory
