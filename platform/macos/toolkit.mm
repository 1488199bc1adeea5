#include "platform/toolkit.h"

#include "platform/autorelease_pool.h"

namespace quillory::platform {

void startToolkit(char*) {
  const AutoreleasePool pool;
  // Cocoa takes its locks only after a thread of its own was started; ours is a POSIX thread.
  NSThread* first = [[NSThread alloc] init];
  [first start];
  [first release];
}

void prepareApplication() { [NSApplication sharedApplication]; }

bool isReadyForPictures() { return true; }

bool isReadyForWindows() { return NSApp != nil; }

void comeToFront() {
  // "Regular": what has no bundle to say so would be taken for a tool without windows.
  [NSApp setActivationPolicy:0];
  [NSApp activateIgnoringOtherApps:YES];
}

void runMainLoop() {
  if (![NSApp respondsToSelector:@selector(run)]) return;
  [NSApp performSelectorOnMainThread:@selector(run) withObject:nil waitUntilDone:YES];
}

NSDictionary* bundleInformation() { return [[NSBundle mainBundle] infoDictionary]; }

// The run loop delivers Apple events in the order of their coming; there is none to hurry.
void handleWaitingEvents() {}

}  // namespace quillory::platform
