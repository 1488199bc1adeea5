#include "platform/show_file.h"

#import "cocoa.h"
#include "platform/autorelease_pool.h"

namespace quillory::platform {

void showFile(const std::string& path) {
  const AutoreleasePool pool;
  NSString* file = [NSString stringWithUTF8String:path.c_str()];
  if (file != nil) [[NSWorkspace sharedWorkspace] selectFile:file inFileViewerRootedAtPath:@""];
}

}  // namespace quillory::platform
