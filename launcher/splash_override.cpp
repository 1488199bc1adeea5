#include "launcher/splash_override.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "formats/archive_output.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

// 0, or the errno of what failed; then nothing is left at `path`.
int writeInPlaceOf(const std::string& path, const std::string& bytes) {
  OwnedFile file = createFile(path);
  if (!file) return errno;
  int error = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() ? 0 : errno;
  if (std::fclose(file.release()) != 0 && error == 0) error = errno;
  if (error != 0) removeFileOrLink(path);
  return error;
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
  if (const int error = writeInPlaceOf(splashPath, bytes); error != 0) {
    logError("[Extractor] The splash image %s cannot be replaced: %s\n", splashPath.c_str(),
             std::strerror(error));
    return;
  }
  chmod777(splashPath.c_str());
}

}  // namespace quillory
