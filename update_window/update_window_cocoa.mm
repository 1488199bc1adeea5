#include "update_window/update_window_cocoa.h"

#import "cocoa.h"
#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/toolkit.h"
#include "support/log.h"
#import "update_window/content_view_cocoa.h"
#include "update_window/layout.h"

namespace quillory::window {
namespace {

using platform::onMainThread;

// Both belong to the main thread.
NSWindow* shown = nil;
UpdateContentView* view = nil;

void makeWindow(const OnPress& onPress) {
  const NSRect rect = NSMakeRect(0, 0, kWidth, kHeight);
  shown = [[NSWindow alloc] initWithContentRect:rect
                                      styleMask:0
                                        backing:NSBackingStoreBuffered
                                          defer:YES];
  [shown setReleasedWhenClosed:NO];
  [shown setBackgroundColor:[NSColor whiteColor]];
  [shown setHasShadow:YES];
  view = [[UpdateContentView alloc] initWithFrame:rect];
  setOnPress([view state], onPress);
  [shown setContentView:view];
  [shown center];
}

}  // namespace

bool isWindowServerThere() {
  bool isThere = false;
  onMainThread([&] {
    const AutoreleasePool pool;
    isThere = platform::isReadyForWindows();
  });
  return isThere;
}

bool showInWindow(const WindowContent& content, const OnPress& onPress) {
  bool isShown = false;
  onMainThread([&] {
    const AutoreleasePool pool;
    if (!platform::isReadyForWindows()) return;
    // What is missing for words, a font say, is no reason not to go on without a window.
    @try {
      const bool isNew = shown == nil;
      if (isNew) makeWindow(onPress);
      setContent([view state], content);
      [view setNeedsDisplay:YES];
      if (isNew) {
        platform::comeToFront();
        [shown makeKeyAndOrderFront:nil];
      }
      isShown = true;
    } @catch (...) {
      logToSystem("The window of an update could not be shown.\n");
    }
  });
  return isShown;
}

void closeWindow() {
  onMainThread([] {
    const AutoreleasePool pool;
    [shown close];
    [shown release];
    shown = nil;
    [view release];
    view = nil;
  });
}

}  // namespace quillory::window
