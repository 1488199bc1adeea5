#include "support/spawner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "support/log.h"
#include "support/process.h"
#include "support/strings.h"

namespace quillory {
namespace {

constexpr std::size_t kDirectoryCapacity = 20000;

// The working directory belongs to the whole process, so it is changed for the moment of the spawn
// only: posix_spawn() itself has no portable way to give the child another one.
class WorkingDirectoryScope {
 public:
  explicit WorkingDirectoryScope(const char* directory) {
    if (directory == nullptr) return;
    if (getcwd(previous_, sizeof previous_) == nullptr) previous_[0] = '\0';
    isChanged_ = chdir(directory) == 0;
    if (!isChanged_) logMessage("[Spawner] WARNING: couldn't change to %s\n", directory);
  }
  ~WorkingDirectoryScope() {
    if (isChanged_ && chdir(previous_) != 0)
      logMessage("[Spawner] WARNING: couldn't change back to %s\n", previous_);
  }
  WorkingDirectoryScope(const WorkingDirectoryScope&) = delete;
  WorkingDirectoryScope& operator=(const WorkingDirectoryScope&) = delete;

 private:
  char previous_[kDirectoryCapacity] = "";
  bool isChanged_ = false;
};

// 0, or -1 with a log line.
int start(const Spawner* spawner, const char* directory, pid_t* child) {
  const char* path = spawner->arguments[0] == nullptr ? "" : spawner->arguments[0];
  int error = 0;
  {
    const WorkingDirectoryScope scope(directory);
    // posix_spawn() takes char* const[] for historical reasons and changes nothing.
    error =
        processCalls.spawn(child, path, const_cast<char* const*>(spawner->arguments), getEnvP());
  }
  if (error == 0) return 0;
  logMessage("Launch Error %d.\n", error);
  return -1;
}

int runAndWait(const Spawner* spawner, const char* directory) {
  pid_t child = 0;
  if (start(spawner, directory, &child) != 0) return -1;
  logMessage("Spawn call returned %d.\n", 0);

  int status = 0;
  const pid_t waited = processCalls.waitFor(child, &status);
  logMessage("Spawn call done %d %d.\n", static_cast<int>(child), status);
  // Nobody knows how a child ended that cannot be waited for: not a success.
  if (waited == -1) return -1;
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  // By intent: what a tool left behind tells more than the way in which it was ended.
  logMessage("[Spawner] runSpawnerAndWait returned %d\n", 0);
  return 0;
}

int runAndContinue(const Spawner* spawner, const char* directory) {
  pid_t child = 0;
  return start(spawner, directory, &child);
}

}  // namespace

Spawner* createSpawner() {
  logMessage("[Spawner] Creating spawner\n");
  return std::make_unique<Spawner>().release();
}

void deleteSpawner(Spawner* spawner) { const std::unique_ptr<Spawner> owner(spawner); }

void setSpawnerExe(Spawner* spawner, const char* path) {
  logMessage("[Spawner] Setting spawner exe to %s\n", path);
  // The child shares standard output: what is buffered here has to come before its first line.
  std::fflush(stdout);
  addSpawnerArg(spawner, path);
}

void addSpawnerArg(Spawner* spawner, const char* text) {
  const char** const end = spawner->arguments + kSpawnerSlots;
  const char** const slot = std::find(spawner->arguments, end, nullptr);
  if (slot == end) {
    logMessage("[Spawner] WARNING: couldn't append argument %s\n", text);
    return;
  }
  *slot = text;
  logMessage("[Spawner] Appended argument %s\n", text);
}

int runSpawnerAndWait(const Spawner* spawner) { return runAndWait(spawner, nullptr); }

int runSpawnerAndWait(const Spawner* spawner, const char* directory) {
  return runAndWait(spawner, directory);
}

int runSpawnerAndContinue(const Spawner* spawner) { return runAndContinue(spawner, nullptr); }

int runSpawnerAndContinue(const Spawner* spawner, const char* directory) {
  return runAndContinue(spawner, directory);
}

}  // namespace quillory
