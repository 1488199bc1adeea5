#import "cocoa.h"

#include <dlfcn.h>

#include <memory>
#include <string>

struct StandInBundle {
  std::string executable;
};

namespace {

NSString* executableName(NSString* folder) {
  NSString* infoPath = [folder stringByAppendingPathComponent:@"Contents/Info.plist"];
  id info = [NSDictionary dictionaryWithContentsOfFile:infoPath];
  id name = [info objectForKey:@"CFBundleExecutable"];
  if ([name isKindOfClass:[NSString class]] && [name length] > 0) return name;
  return [[folder lastPathComponent] stringByDeletingPathExtension];
}

NSError* errorSaying(const char* text) {
  NSString* description = [NSString stringWithFormat:@"%s", text];
  NSDictionary* info = [NSDictionary dictionaryWithObject:description
                                                   forKey:NSLocalizedDescriptionKey];
  return [NSError errorWithDomain:NSCocoaErrorDomain code:0 userInfo:info];
}

}  // namespace

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
  NSString* folder = [reinterpret_cast<NSURL*>(const_cast<StandInUrl*>(url)) path];
  BOOL isFolder = NO;
  if (folder == nil || ![[NSFileManager defaultManager] fileExistsAtPath:folder
                                                             isDirectory:&isFolder])
    return nullptr;
  if (!isFolder) return nullptr;
  NSString* inside = [@"Contents/MacOS" stringByAppendingPathComponent:executableName(folder)];
  NSString* executable = [folder stringByAppendingPathComponent:inside];
  auto bundle = std::make_unique<StandInBundle>();
  bundle->executable = [executable fileSystemRepresentation];
  return bundle.release();  // Never deleted: see the header.
}

Boolean CFBundleLoadExecutableAndReturnError(CFBundleRef bundle, CFErrorRef* error) {
  if (dlopen(bundle->executable.c_str(), RTLD_LAZY | RTLD_GLOBAL) != nullptr) return 1;
  const char* reason = dlerror();
  if (error != nullptr)
    *error = reinterpret_cast<CFErrorRef>([errorSaying(reason == nullptr ? "" : reason) retain]);
  return 0;
}
