#import <Foundation/Foundation.h>

#include <cstring>

#include "platform/autorelease_pool.h"
#include "platform/support_cocoa.h"
#import "this_thread.h"

namespace quillory {
namespace {

NSString* asPath(const char* path) {
  return [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path
                                                                     length:std::strlen(path)];
}

}  // namespace

bool isMainThreadOfCocoa() { return platform::isMainThread(); }

bool moveThroughCocoa(const char* from, const char* to, std::string& error) {
  const AutoreleasePool pool;
  NSString* source = asPath(from);
  NSString* target = asPath(to);
  if (source == nil || target == nil) {
    error = "the path is not valid text";
    return false;
  }
  NSError* failure = nil;
  if ([[NSFileManager defaultManager] moveItemAtPath:source toPath:target error:&failure])
    return true;
  const char* text = [[failure localizedDescription] UTF8String];
  error = text != nullptr ? text : "the file manager gave no reason";
  return false;
}

}  // namespace quillory
