#include "java/trial_end.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string_view>

#include "formats/launch_properties_format.h"
#include "formats/update_trials_format.h"
#include "support/files.h"
#include "support/paths.h"

namespace quillory {

std::string tryFileOf(const std::string& ownFolder, const std::string& propertiesFile) {
  const std::string folder = joinPath(ownFolder, kTrialsFolder);
  if (!isFolder(folder)) return "";
  std::string_view name = propertiesFile;
  name.remove_prefix(name.rfind('/') + 1);
  constexpr std::string_view kName = kLaunchPropertiesPrefix;
  if (name.starts_with(kName)) name.remove_prefix(kName.size());
  return joinPath(folder, kTryPrefix + std::string(name));
}

void noteEnd(const std::string& path, int status) noexcept {
  if (path.empty()) return;
  const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return;  // The version is known to be good: nobody asks.
  std::array<char, 32> line;
  const int length = std::snprintf(line.data(), line.size(), "%s%d\n", kTryEnded, status);
  // Half a line does not count, and there is nobody left to be told.
  [[maybe_unused]] const ssize_t written =
      write(file, line.data(), static_cast<std::size_t>(length));
  close(file);
}

}  // namespace quillory
