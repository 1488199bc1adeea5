// Functions of Apple's Objective-C runtime that compiled code calls.
#import <Foundation/Foundation.h>
#include <objc/runtime.h>
#include <unwind.h>

#include <cstring>
#include <vector>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/objc/bridge.h"

namespace quillory::loader {
namespace {

id theirAlloc(Class target) { return [target alloc]; }

id theirAllocInit(Class target) { return [[target alloc] init]; }

id theirRetain(id object) { return [object retain]; }

void theirRelease(id object) { [object release]; }

id theirAutorelease(id object) { return [object autorelease]; }

/// Exceptions that @catch blocks of this thread are at.
thread_local std::vector<_Unwind_Exception*> caught;

// The object that was thrown; nil for an exception of C++.
id theirBeginCatch(_Unwind_Exception* exception) {
  caught.push_back(exception);
  char kind[8];
  std::memcpy(kind, &exception->exception_class, sizeof kind);
  if (std::memcmp(kind, "CBJCUNG", 7) != 0 && std::memcmp(kind, "GNUCOBJC", 8) != 0) return nil;
  id object;
  std::memcpy(&object, exception + 1, sizeof object);
  return object;
}

void theirEndCatch() {
  if (caught.empty()) fail("objc_end_catch without a catch");
  _Unwind_Exception* const exception = caught.back();
  caught.pop_back();
  _Unwind_DeleteException(exception);
}

void theirThrow(id object) { @throw object; }

}  // namespace

Symbols runtimeSymbols() {
  static const void* emptyCache = nullptr;
  static const Symbol kSymbols[] = {
      {"__objc_empty_cache", &emptyCache},          {"_objc_alloc", code(theirAlloc)},
      {"_objc_alloc_init", code(theirAllocInit)},   {"_objc_autorelease", code(theirAutorelease)},
      {"_objc_begin_catch", code(theirBeginCatch)}, {"_objc_end_catch", code(theirEndCatch)},
      {"_objc_exception_throw", code(theirThrow)},  {"_objc_release", code(theirRelease)},
      {"_objc_retain", code(theirRetain)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
