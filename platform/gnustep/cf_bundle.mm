#import "cocoa.h"

#include <dlfcn.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "platform/gnustep/info_plist.h"

struct StandInBundle {
  std::string executable;
};

namespace {

std::string executableName(const std::filesystem::path& folder) {
  using quillory::platform::infoPlistIn;
  using quillory::platform::textsOfInfoPlist;
  const std::string name = textsOfInfoPlist(infoPlistIn(folder / "Contents"))["CFBundleExecutable"];
  return name.empty() ? folder.stem().string() : name;
}

NSError* errorSaying(const char* text) {
  NSString* description = [NSString stringWithFormat:@"%s", text];
  NSDictionary* info = [NSDictionary dictionaryWithObject:description
                                                   forKey:NSLocalizedDescriptionKey];
  return [NSError errorWithDomain:NSCocoaErrorDomain code:0 userInfo:info];
}

}  // namespace

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
  NSString* path = [reinterpret_cast<NSURL*>(const_cast<StandInUrl*>(url)) path];
  if (path == nil) return nullptr;
  const std::filesystem::path folder = [path fileSystemRepresentation];
  std::error_code unknown;
  if (!std::filesystem::is_directory(folder, unknown)) return nullptr;
  auto bundle = std::make_unique<StandInBundle>();
  bundle->executable = folder / "Contents/MacOS" / executableName(folder);
  return bundle.release();  // Never deleted: see the header.
}

Boolean CFBundleLoadExecutableAndReturnError(CFBundleRef bundle, CFErrorRef* error) {
  if (dlopen(bundle->executable.c_str(), RTLD_LAZY | RTLD_GLOBAL) != nullptr) return 1;
  const char* reason = dlerror();
  if (error != nullptr)
    *error = reinterpret_cast<CFErrorRef>([errorSaying(reason == nullptr ? "" : reason) retain]);
  return 0;
}
