#include "platform/gnustep/own_process.h"

#include <objc/runtime.h>

#import "cocoa.h"

namespace quillory::platform {
namespace {

// The back-end asks to be told of changed settings of the mouse, at the first press of a button.
id ownNotifications(id, SEL) {
  static NSNotificationCenter* const center = [[NSNotificationCenter alloc] init];
  return center;
}

// Every window sees to it, at the first press of a button in it; it is what asks for the workspace
// and with it for the services. Windows are in front and have the keyboard without.
id stayAsItIs(id, SEL) { return nil; }

void replace(Method method, IMP with) {
  if (method != nullptr) method_setImplementation(method, with);
}

}  // namespace

void keepToOwnProcess() {
  replace(class_getClassMethod([NSDistributedNotificationCenter class], @selector(defaultCenter)),
          reinterpret_cast<IMP>(ownNotifications));
  replace(class_getInstanceMethod(NSClassFromString(@"NSApplication"),
                                  @selector(activateIgnoringOtherApps:)),
          reinterpret_cast<IMP>(stayAsItIs));
}

}  // namespace quillory::platform
