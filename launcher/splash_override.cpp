#include "launcher/splash_override.h"

#include <cstring>

#include "support/files.h"
#include "support/log.h"
#include "support/new_file.h"

namespace quillory {
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
  NewFile picture(splashPath);
  picture.write(bytes.data(), bytes.size());
  if (!picture.close()) {
    logError("[Extractor] The splash image %s cannot be replaced: %s\n", splashPath.c_str(),
             std::strerror(picture.error()));
    return;
  }
  chmod777(splashPath.c_str());
}

}  // namespace quillory
