#import "cocoa.h"

#include <string>

#include "platform/gnustep/folder_bundle.h"

using quillory::platform::FolderBundle;

struct StandInBundle {
  FolderBundle* folder;
};

namespace {

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
  FolderBundle* const folder =
      quillory::platform::openFolderBundle([path fileSystemRepresentation]);
  return folder == nullptr ? nullptr : new StandInBundle{folder};  // Never deleted: see the header.
}

Boolean CFBundleLoadExecutableAndReturnError(CFBundleRef bundle, CFErrorRef* error) {
  std::string reason;
  if (quillory::platform::loadFolderBundle(*bundle->folder, reason)) return 1;
  if (error != nullptr) *error = reinterpret_cast<CFErrorRef>([errorSaying(reason.c_str()) retain]);
  return 0;
}
