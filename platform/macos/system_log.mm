#import <Foundation/Foundation.h>

#include <cstring>

#include "platform/autorelease_pool.h"
#include "platform/support_cocoa.h"

namespace quillory {
namespace {

NSString* textWithEncoding(const char* message, NSStringEncoding encoding) {
  NSString* text = [[NSString alloc] initWithBytes:message
                                            length:std::strlen(message)
                                          encoding:encoding];
  return [text autorelease];
}

}  // namespace

void logThroughCocoa(const char* message) {
  const AutoreleasePool pool;
  NSString* text = textWithEncoding(message, NSUTF8StringEncoding);
  if (text == nil) text = textWithEncoding(message, NSISOLatin1StringEncoding);
  // Not as the format itself: a message may hold percent signs.
  NSLog(@"%@", text);
}

}  // namespace quillory
