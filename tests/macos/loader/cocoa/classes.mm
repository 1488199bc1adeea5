// Foundation, and which classes an image gets instead of GNUstep's own.
#import <Foundation/Foundation.h>

#include <objc/runtime.h>

#include <utility>

#include "platform/autorelease_pool.h"
#include "platform/gnustep/main_loop_source.h"
#import "platform/gnustep/url_download.h"
#include "platform/gnustep/window_library.h"
#include "platform/toolkit.h"
#include "tests/macos/loader/cocoa/stand_ins.h"
#include "tests/macos/loader/load_error.h"

/// GNUstep does not know where a bundle on macOS has its Info.plist.
@interface ImageBundle : NSBundle
@end

@implementation ImageBundle

+ (NSBundle*)mainBundle {
  static NSBundle* bundle = [[ImageBundle alloc] initWithPath:[[NSBundle mainBundle] bundlePath]];
  return bundle;
}

- (NSDictionary*)infoDictionary {
  return quillory::platform::bundleInformation();
}

@end

/// The application object is made as this project makes it on this machine, and its loop is ours:
/// that of GNUstep starts a daemon which outlives the process.
@interface ImageApplication : NSObject
@end

@implementation ImageApplication

+ (id)sharedApplication {
  if (NSApp == nil && quillory::platform::isReadyForWindows()) {
    Method run = class_getInstanceMethod([ImageApplication class], @selector(runLikeAppKit));
    class_replaceMethod([NSApp class], @selector(run), method_getImplementation(run), "v@:");
  }
  return NSApp;
}

- (void)runLikeAppKit {
  NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
  // The constants of these names are in the library that is loaded late.
  for (NSString* name : {@"NSApplicationWillFinishLaunchingNotification",
                         @"NSApplicationDidFinishLaunchingNotification"})
    [center postNotificationName:name object:self];
  quillory::platform::runMainLoop();
}

@end

namespace quillory::loader {

void startFoundation(char* program) {
  platform::startToolkit(program);
  // An image without a display runs the loop itself.
  platform::joinMainLoop();
  const AutoreleasePool pool;
  // Else the linker leaves the file out.
  [URLDownload class];
}

void startAppKit() {
  if (!platform::loadWindowLibrary()) throw LoadError("this machine has no library of windows");
}

std::string_view classInstead(std::string_view name) {
  constexpr std::pair<std::string_view, std::string_view> kInstead[] = {
      {"NSApplication", "ImageApplication"},
      {"NSBundle", "ImageBundle"},
      {"NSURLDownload", "URLDownload"},
      {"NSURLSession", "ImageSession"},
      {"NSURLSessionConfiguration", "ImageSessionConfiguration"},
      {"NSWindow", "ImageWindow"},
  };
  for (const auto& [theirs, ours] : kInstead)
    if (name == theirs) return ours;
  return name;
}

}  // namespace quillory::loader
