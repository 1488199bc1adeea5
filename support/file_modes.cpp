#include "support/file_modes.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "support/log.h"
#include "support/process.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

// How system() tells that the command ended with status 1.
constexpr int kCommandFailed = 1 << 8;

bool isPlainShellArgument(std::string_view path) {
  // The command has no "--", so a dash at the front would make an option of the path.
  return isSafeInShellQuotes(path) && !path.starts_with('-');
}

int changeMode(const char* path, mode_t mode) {
  return chmod(path, mode) == 0 ? 0 : kCommandFailed;
}

// Goes on behind a failure, as the command does. A folder gets its mode before it is entered, which
// may be what makes it readable.
int changeModesBelow(const char* path, mode_t mode) {
  int status = changeMode(path, mode);
  std::error_code error;
  if (!fs::is_directory(path, error)) return status;
  for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_symlink(unknown)) continue;
    if (changeMode(entry->path().c_str(), mode) != 0) status = kCommandFailed;
  }
  return error ? kCommandFailed : status;
}

template <typename WithoutShell>
int runChmod(const char* command, const char* path, WithoutShell withoutShell) {
  const std::string line = std::string(command) + " \"" + path + '"';
  logMessage("[ChMod] Executing %s\n", line.c_str());
  if (isPlainShellArgument(path)) return processCalls.runShell(line.c_str());
  return withoutShell();
}

}  // namespace

int chmodR755(const char* path) {
  return runChmod("chmod -R 755", path, [path] { return changeModesBelow(path, 0755); });
}

int chmod777(const char* path) {
  return runChmod("chmod 777", path, [path] { return changeMode(path, 0777); });
}

}  // namespace quillory
