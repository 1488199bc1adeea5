#include "install/file_logging.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

#include "support/clock.h"
#include "support/files.h"
#include "support/log.h"
#include "support/start_end.h"

namespace quillory {
namespace {

constexpr int kMostNamesTried = 1000;

// "<program>-<date>-<time>-<millis>.log" in local time.
std::string fileNameOf(const char* program, std::uint64_t now) {
  const time_t seconds = static_cast<time_t>(now / 1000);
  tm local{};
  localtime_r(&seconds, &local);
  char date[64];
  strftime(date, sizeof date, "%Y-%m-%d-%H-%M-%S", &local);
  char millis[8];
  std::snprintf(millis, sizeof millis, "%03d", static_cast<int>(now % 1000));
  return std::string(program) + '-' + date + '-' + millis + ".log";
}

// A link of another user would lead the log to wherever he likes.
int openFolder(const std::string& folder) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const bool isOurLink = isLink(folder) && !isForeignLink(folder);
  return open(folder.c_str(), isOurLink ? kFlags : kFlags | O_NOFOLLOW);
}

// The file of a run in the same millisecond is written anew. A link, somebody else's file or one
// with a second name is something that another user may have put there: -1.
int openOwnFile(int place, const std::string& name) {
  const int file = openat(place, name.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  struct stat found {};
  if (file != -1 && fstat(file, &found) == 0 && S_ISREG(found.st_mode) &&
      found.st_uid == geteuid() && found.st_nlink == 1 && ftruncate(file, 0) == 0)
    return file;
  if (file != -1) close(file);
  return -1;
}

// Null where none can be made; `name` is the one that was tried last.
std::FILE* createLogFile(const std::string& folder, const char* program, std::uint64_t now,
                         std::string& name) {
  const int place = openFolder(folder);
  int file = -1;
  for (int tries = 0; tries < kMostNamesTried; ++tries) {
    name = fileNameOf(program, now + static_cast<std::uint64_t>(tries));
    file = openat(place, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                  installationFileMode());
    if (file != -1 || errno != EEXIST) break;
    file = openOwnFile(place, name);
    if (file != -1) break;
  }
  if (place != -1) close(place);
  return file == -1 ? nullptr : fdopen(file, "w");
}

}  // namespace

void setupFileLogging(const char* masterFolder, const char* program) {
  const std::uint64_t now = timeCalls.nowMillis();
  std::string folder(masterFolder);
  makeDir(folder.c_str());
  if (!folder.ends_with('/')) folder += '/';
  folder += "logs";
  makeDir(folder.c_str());
  std::string name;
  std::FILE* const file = createLogFile(folder, program, now, name);
  logMessage("[Extractor] Logging to %s/%s\n", folder.c_str(), name.c_str());
  setFileToLogTo(file);
  if (file != nullptr) noteLogFile(folder + '/' + name);
}

}  // namespace quillory
