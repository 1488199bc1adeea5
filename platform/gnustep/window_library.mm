#include "platform/gnustep/window_library.h"

#import <GNUstepGUI/GSVersion.h>
#include <dlfcn.h>

#include <string>

#import "cocoa.h"
#include "platform/gnustep/late_classes.h"
#include "support/log.h"

// What the code refers to in the library, other than by sending messages.
NSApplication* NSApp = nil;
NSString* NSCalibratedRGBColorSpace = @"NSCalibratedRGBColorSpace";

void NSRectFill(NSRect rect) { [NSClassFromString(@"NSBezierPath") fillRect:rect]; }

// A file that names a class refers to a symbol of this form, so that a forgotten library shows when
// the program is linked. Nothing reads it: classes are found by their names.
extern "C" {
extern const char __objc_class_name_NSApplication = 0;
extern const char __objc_class_name_NSBezierPath = 0;
extern const char __objc_class_name_NSBitmapImageRep = 0;
extern const char __objc_class_name_NSColor = 0;
extern const char __objc_class_name_NSFont = 0;
extern const char __objc_class_name_NSGraphicsContext = 0;
extern const char __objc_class_name_NSImage = 0;
extern const char __objc_class_name_NSPasteboard = 0;
extern const char __objc_class_name_NSView = 0;
extern const char __objc_class_name_NSButton = 0;
extern const char __objc_class_name_NSTextField = 0;
extern const char __objc_class_name_NSWindow = 0;
}

namespace quillory::platform {
namespace {

bool load() {
  const std::string name = "libgnustep-gui.so." + std::to_string(GNUSTEP_GUI_MAJOR_VERSION) + '.' +
                           std::to_string(GNUSTEP_GUI_MINOR_VERSION);
  if (dlopen(name.c_str(), RTLD_LAZY | RTLD_GLOBAL) == nullptr) {
    logToSystem("The library of windows cannot be loaded: %s\n", dlerror());
    return false;
  }
  registerLateClasses();
  return true;
}

}  // namespace

bool loadWindowLibrary() {
  static const bool isLoaded = load();
  return isLoaded;
}

}  // namespace quillory::platform
