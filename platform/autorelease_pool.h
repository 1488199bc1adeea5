// Cocoa's autorelease pool for a scope. Every thread of our own needs one around what it does with
// Cocoa, and so does every turn of a loop.
#pragma once
#import <Foundation/Foundation.h>

namespace quillory {

class AutoreleasePool {
 public:
  AutoreleasePool() : pool_([[NSAutoreleasePool alloc] init]) {}
  ~AutoreleasePool() { [pool_ drain]; }
  AutoreleasePool(const AutoreleasePool&) = delete;
  AutoreleasePool& operator=(const AutoreleasePool&) = delete;

 private:
  NSAutoreleasePool* pool_;
};

}  // namespace quillory
