// Functions and constants of the frameworks.
#import <Foundation/Foundation.h>
#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "platform/gnustep/cf_bundle.h"
#include "platform/gnustep/display.h"
#include "platform/gnustep/main_queue.h"
#include "tests/macos/loader/cocoa/stand_ins.h"

namespace quillory::loader {
namespace {

int theirWindowLevel(int key) {
  constexpr int kFloatingKey = 5;
  constexpr int kFloatingLevel = 2;  // GNUstep's own
  return key == kFloatingKey ? kFloatingLevel : 0;
}

/// A session is there where there is a display; what it says of itself nobody asks.
NSDictionary* theirSession() {
  return platform::isDisplayNamed() && platform::isDisplayReachable() ? [[NSDictionary alloc] init]
                                                                      : nil;
}

// An inline function here.
BOOL theirPointInRect(NSPoint point, NSRect rect) { return NSPointInRect(point, rect); }

void theirCfRelease(id object) { [object release]; }

// A system that has lost the older of the two classes for downloads.
bool isWithoutDownloads(NSString* name) {
  return std::getenv("QUILLORY_LOADER_WITHOUT_NSURLDOWNLOAD") != nullptr &&
         [name isEqualToString:@"NSURLDownload"];
}

Class theirClassFromString(NSString* name) {
  if (isWithoutDownloads(name)) return nil;
  return NSClassFromString(
      [NSString stringWithUTF8String:std::string(classInstead([name UTF8String])).c_str()]);
}

void theirDispatchSync(const void* queue, void* context, dispatch_function_t work) {
  (void)queue;  // There is the main one only.
  dispatch_sync_f(dispatch_get_main_queue(), context, work);
}

}  // namespace

Symbols frameworkSymbols() {
  static const void* noAllocator = nullptr;
  static char mainQueue[64];
  static const Symbol kSymbols[] = {
      {"_CFBundleCreate", code(CFBundleCreate)},
      {"_CFBundleLoadExecutableAndReturnError", code(CFBundleLoadExecutableAndReturnError)},
      {"_CFRelease", code(theirCfRelease)},
      {"_CGSessionCopyCurrentDictionary", code(theirSession)},
      {"_CGWindowLevelForKey", code(theirWindowLevel)},
      {"_NSClassFromString", code(theirClassFromString)},
      {"_NSArgumentDomain", &NSArgumentDomain},
      {"_NSDefaultRunLoopMode", &NSDefaultRunLoopMode},
      {"_NSLog", code(NSLog)},
      {"_NSPointInRect", code(theirPointInRect)},
      {"_NSURLErrorFailingURLStringErrorKey", &NSURLErrorFailingURLStringErrorKey},
      {"_NSZeroRect", &NSZeroRect},
      {"__dispatch_main_q", mainQueue},
      {"_dispatch_sync_f", code(theirDispatchSync)},
      {"_kCFAllocatorDefault", &noAllocator},
  };
  return kSymbols;
}

const void* appKitSymbol(std::string_view name) {
  for (const std::string_view known :
       {"NSApp", "NSCalibratedRGBColorSpace", "NSRectFill", "NSDeviceRGBColorSpace"})
    if (name == known) return dlsym(RTLD_DEFAULT, std::string(name).c_str());
  return nullptr;
}

}  // namespace quillory::loader
