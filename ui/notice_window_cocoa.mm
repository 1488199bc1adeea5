#include "ui/notice_window_cocoa.h"

#include <cstdlib>

#import "cocoa.h"
#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/toolkit.h"
#include "support/exit_status.h"
#include "support/log.h"
#include "support/start_end.h"

/// What the button is connected to.
@interface NoticeQuitter : NSObject
- (void)quit:(id)sender;
@end

@implementation NoticeQuitter

- (void)quit:(id)sender {
  (void)sender;
  quillory::logMessage("[Extractor] The user did not want to wait any longer.\n");
  quillory::noteStage(quillory::StartStage::kOver);  // Nothing has failed.
  std::exit(quillory::kExitFailure);
}

@end

namespace quillory {
namespace {

constexpr NSRect kWindow = {{0, 0}, {640, 170}};
constexpr NSRect kText = {{20, 56}, {600, 98}};
constexpr NSRect kButton = {{520, 16}, {100, 28}};

// All of it belongs to the main thread.
NSWindow* notice = nil;

NSTextField* newText(NSString* text) {
  NSTextField* field = [[NSTextField alloc] initWithFrame:kText];
  [field setStringValue:text];
  [field setEditable:NO];
  [field setSelectable:NO];
  [field setBezeled:NO];
  [field setDrawsBackground:NO];
  return field;
}

NSButton* newButton() {
  // For good, as the button does not keep it.
  static NoticeQuitter* const quitter = [[NoticeQuitter alloc] init];
  NSButton* button = [[NSButton alloc] initWithFrame:kButton];
  [button setTitle:@"Quit"];
  [button setTarget:quitter];
  [button setAction:@selector(quit:)];
  return button;
}

void makeNotice(NSString* text) {
  notice = [[NSWindow alloc] initWithContentRect:kWindow
                                       styleMask:0
                                         backing:NSBackingStoreBuffered
                                           defer:YES];
  [notice setReleasedWhenClosed:NO];
  // Without a bar nothing shows it but lists of windows, and what reads the screen aloud.
  [notice setTitle:[[NSProcessInfo processInfo] processName]];
  [notice setBackgroundColor:[NSColor whiteColor]];
  NSView* content = [[NSView alloc] initWithFrame:kWindow];
  NSTextField* field = newText(text);
  NSButton* button = newButton();
  [content addSubview:field];
  [content addSubview:button];
  [notice setContentView:content];
  [field release];
  [button release];
  [content release];
}

void takeDown() {
  platform::onMainThread([] {
    if (notice == nil) return;
    const AutoreleasePool pool;
    [notice close];
    [notice release];
    notice = nil;
  });
}

void show(const char* text) {
  takeDown();
  platform::onMainThread([text] {
    const AutoreleasePool pool;
    NSString* words = [NSString stringWithUTF8String:text];
    if (words == nil || !platform::isReadyForWindows()) return;
    // What is missing for words and buttons, a font say, is no reason to end a start.
    @try {
      makeNotice(words);
      [notice center];
      [notice makeKeyAndOrderFront:nil];
    } @catch (...) {
      logToSystem("A notice could not be shown.\n");
    }
  });
}

}  // namespace

NoticeCalls cocoaNotice() { return {.show = show, .takeDown = takeDown}; }

}  // namespace quillory
