#include "java/bundle_loader_cocoa.h"

#import "cocoa.h"

#include "platform/autorelease_pool.h"
#include "support/log.h"

namespace quillory {
namespace {

void* createBundle(const char* path) {
  const AutoreleasePool pool;
  NSString* text = [NSString stringWithUTF8String:path];
  if (text == nil) return nullptr;  // Not UTF-8.
  NSURL* url = [NSURL fileURLWithPath:text isDirectory:YES];
  logMessage("[BundleLoader] Created NSURL\n");
  logToSystem("[BundleLoader] URL is %s\n", [[url absoluteString] UTF8String]);
  return CFBundleCreate(kCFAllocatorDefault, reinterpret_cast<CFURLRef>(url));
}

bool loadExecutable(void* bundle) {
  const AutoreleasePool pool;
  CFErrorRef error = nullptr;
  const bool isLoaded =
      CFBundleLoadExecutableAndReturnError(static_cast<CFBundleRef>(bundle), &error) != 0;
  if (error == nullptr) return isLoaded;
  [reinterpret_cast<NSError*>(error) release];
  return false;
}

}  // namespace

BundleCalls cocoaBundles() {
  return {.createBundle = createBundle, .loadExecutable = loadExecutable};
}

}  // namespace quillory
