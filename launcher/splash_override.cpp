#include "launcher/splash_override.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

/// A new file at `path`, open for writing, in place of what stands there; null when that cannot be
/// removed, or something else appears there meanwhile (errno says which).
OwnedFile createInPlaceOf(const std::string& path) {
  if (unlink(path.c_str()) != 0 && errno != ENOENT) return nullptr;
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  return OwnedFile(descriptor >= 0 ? fdopen(descriptor, "wb") : nullptr);
}

}  // namespace

void saveOverrideImageIfAllowed(const std::string& canOverride,
                                const std::optional<std::string>& image,
                                const std::string& splashPath) {
  if (canOverride != "1") return;
  const std::string bytes = image.value_or("");
  logMessage("[Extractor] Authorised to override the splash image.\n");
  logMessage("[Extractor] DynamicSplash is %d, size is %d\n", image.has_value() ? 1 : 0,
             static_cast<int>(bytes.size()));
  if (bytes.empty()) return;

  logMessage("[Extractor] Overwriting splash image at %s\n", splashPath.c_str());
  OwnedFile file = createInPlaceOf(splashPath);
  if (file == nullptr) {
    logError("[Extractor] The splash image %s cannot be replaced: %s\n", splashPath.c_str(),
             std::strerror(errno));
    return;
  }
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  file.reset();
  chmod777(splashPath.c_str());
}

}  // namespace quillory
