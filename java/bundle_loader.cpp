#include "java/bundle_loader.h"

#include <cstdio>

#include "support/log.h"
#include "support/platform.h"

namespace quillory {

void loadOSXBundle(const char* path) {
  logMessage("[BundleLoader] Creating jre path URL for path %s\n", path);
  void* bundle = platformCalls.bundles.createBundle(path);
  if (bundle == nullptr) {
    logMessage("[BundleLoader] Bundle is null?");
  } else {
    logMessage("[BundleLoader] Created Bundle\n");
    if (platformCalls.bundles.loadExecutable(bundle)) {
      logMessage("[BundleLoader] Bundle Loaded OK\n");
    } else {
      logMessage("[BundleLoader] Could not load JRE bundle!");
    }
  }
  std::fflush(stderr);
  std::fflush(stdout);
}

}  // namespace quillory
