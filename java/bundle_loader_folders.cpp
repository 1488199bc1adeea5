// Where bundles are folders to the system: without Cocoa, which this would be the only use of in
// most starts.
#include "java/bundle_loader_cocoa.h"
#include "platform/gnustep/folder_bundle.h"
#include "support/file_urls.h"
#include "support/log.h"
#include "support/utf8.h"

namespace quillory {
namespace {

void* createBundle(const char* path) {
  if (!isUtf8(path)) return nullptr;
  logMessage("[BundleLoader] Created NSURL\n");
  std::string url = fileUrlOf(path);
  if (!url.ends_with('/')) url += '/';
  logToSystem("[BundleLoader] URL is %s\n", url.c_str());
  return platform::openFolderBundle(path);
}

bool loadExecutable(void* bundle) {
  std::string reason;
  return platform::loadFolderBundle(*static_cast<platform::FolderBundle*>(bundle), reason);
}

}  // namespace

BundleCalls cocoaBundles() {
  return {.createBundle = createBundle, .loadExecutable = loadExecutable};
}

}  // namespace quillory
