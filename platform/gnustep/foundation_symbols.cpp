// No header of Foundation's is included, where all of these are constants.
#include "platform/gnustep/foundation_symbols.h"

#include <dlfcn.h>

#include <cstdarg>

namespace {

void* foundation = nullptr;

template <typename Function>
Function* find(const char* name) {
  return reinterpret_cast<Function*>(dlsym(foundation, name));
}

}  // namespace

extern "C" {

void* NSCocoaErrorDomain = nullptr;
void* NSDefaultRunLoopMode = nullptr;
void* NSLocalizedDescriptionKey = nullptr;
void* NSURLErrorDomain = nullptr;
void* NSURLErrorFailingURLStringErrorKey = nullptr;

void* GNUstepConfig(void* configuration) {
  static auto* const real = find<void*(void*)>("GNUstepConfig");
  return real(configuration);
}

void* NSClassFromString(void* name) {
  static auto* const real = find<void*(void*)>("NSClassFromString");
  return real(name);
}

void NSLog(void* format, ...) {
  static auto* const real = find<void(void*, va_list)>("NSLogv");
  va_list arguments;
  va_start(arguments, format);
  real(format, arguments);
  va_end(arguments);
}

// A file that names a class refers to a symbol of this form, so that a forgotten library shows when
// the program is linked. Nothing reads it: classes are found by their names.
extern const char __objc_class_name_NSAppleEventDescriptor = 0;
extern const char __objc_class_name_NSAppleEventManager = 0;
extern const char __objc_class_name_NSArray = 0;
extern const char __objc_class_name_NSAutoreleasePool = 0;
extern const char __objc_class_name_NSBundle = 0;
extern const char __objc_class_name_NSConstantString = 0;
extern const char __objc_class_name_NSData = 0;
extern const char __objc_class_name_NSDate = 0;
extern const char __objc_class_name_NSDictionary = 0;
extern const char __objc_class_name_NSDistributedNotificationCenter = 0;
extern const char __objc_class_name_NSError = 0;
extern const char __objc_class_name_NSFileManager = 0;
extern const char __objc_class_name_NSHTTPURLResponse = 0;
extern const char __objc_class_name_NSMutableArray = 0;
extern const char __objc_class_name_NSMutableDictionary = 0;
extern const char __objc_class_name_NSNotificationCenter = 0;
extern const char __objc_class_name_NSObject = 0;
extern const char __objc_class_name_NSProcessInfo = 0;
extern const char __objc_class_name_NSRunLoop = 0;
extern const char __objc_class_name_NSString = 0;
extern const char __objc_class_name_NSThread = 0;
extern const char __objc_class_name_NSTimer = 0;
extern const char __objc_class_name_NSURL = 0;
extern const char __objc_class_name_NSURLDownload = 0;
extern const char __objc_class_name_NSURLRequest = 0;
extern const char __objc_class_name_NSURLResponse = 0;
extern const char __objc_class_name_NSUserDefaults = 0;

}  // extern "C"

namespace quillory::platform {
namespace {

void fill(void*& symbol, const char* name) {
  auto* const real = static_cast<void**>(dlsym(foundation, name));
  if (real != nullptr) symbol = *real;
}

}  // namespace

void fillFoundationSymbols(void* library) {
  foundation = library;
  fill(NSCocoaErrorDomain, "NSCocoaErrorDomain");
  fill(NSDefaultRunLoopMode, "NSDefaultRunLoopMode");
  fill(NSLocalizedDescriptionKey, "NSLocalizedDescriptionKey");
  fill(NSURLErrorDomain, "NSURLErrorDomain");
  fill(NSURLErrorFailingURLStringErrorKey, "NSURLErrorFailingURLStringErrorKey");
}

}  // namespace quillory::platform
