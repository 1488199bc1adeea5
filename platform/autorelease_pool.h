// Cocoa's autorelease pool for a scope. Every thread of our own needs one around what it does with
// Cocoa, and so does every turn of a loop. The first one of a start brings Foundation up, where it
// is loaded late: what a start without windows does has none.
#pragma once
#import <Foundation/Foundation.h>

#include "platform/foundation.h"

namespace quillory {

class AutoreleasePool {
 public:
  AutoreleasePool() {
    needFoundation();
    pool_ = [[NSAutoreleasePool alloc] init];
  }
  ~AutoreleasePool() { [pool_ drain]; }
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  NSAutoreleasePool* pool_;
};

}  // namespace quillory
