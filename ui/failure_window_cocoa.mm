#include "ui/failure_window_cocoa.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#import "cocoa.h"
#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/show_file.h"
#include "platform/toolkit.h"
#include "support/log.h"
#import "ui/failure_view_cocoa.h"

namespace quillory {
namespace {

constexpr NSRect kFailureWindow = {{0, 0}, {640, 300}};
constexpr NSRect kSentence = {{20, 244}, {600, 40}};
constexpr NSRect kCause = {{20, 96}, {600, 140}};
constexpr NSRect kLog = {{20, 56}, {600, 34}};
constexpr double kButtonY = 16;
constexpr double kButtonHeight = 28;
constexpr double kSentenceSize = 15;
constexpr double kCauseSize = 11;
constexpr std::chrono::seconds kBetweenLooks{1};

// Both belong to the main thread.
NSWindow* failure = nil;
const FailureNotice* told = nullptr;

std::mutex mutex;
std::condition_variable closed;
bool isClosed = false;

NSString* textOf(const std::string& text) {
  NSString* words = [NSString stringWithUTF8String:text.c_str()];
  return words == nil ? @"" : words;
}

void copyToPasteboard(const FailureNotice& notice) {
  // By the name's value, as the name itself is data of a library that is loaded late.
  NSString* kind = @"NSStringPboardType";
  NSPasteboard* board = [NSPasteboard generalPasteboard];
  [board declareTypes:[NSArray arrayWithObject:kind] owner:nil];
  [board setString:textOf(notice.sentence + "\n\n" + notice.cause + '\n' + notice.logFile + '\n')
           forType:kind];
}

void close() {
  {
    const std::lock_guard lock(mutex);
    isClosed = true;
  }
  closed.notify_all();
}

}  // namespace
}  // namespace quillory

/// What the buttons are connected to.
@interface FailureButtons : NSObject
- (void)copyText:(id)sender;
- (void)showLog:(id)sender;
- (void)closeWindow:(id)sender;
@end

@implementation FailureButtons

- (void)copyText:(id)sender {
  (void)sender;
  // A session without a clipboard has the text on the screen still.
  @try {
    if (quillory::told != nullptr) quillory::copyToPasteboard(*quillory::told);
  } @catch (...) {
    quillory::logToSystem("The text could not be copied.\n");
  }
}

- (void)showLog:(id)sender {
  (void)sender;
  if (quillory::told != nullptr) quillory::platform::showFile(quillory::told->logFile);
}

- (void)closeWindow:(id)sender {
  (void)sender;
  quillory::close();
}

@end

namespace quillory {
namespace {

void addText(NSView* view, NSRect place, const std::string& text, NSFont* font) {
  NSTextField* field = [[NSTextField alloc] initWithFrame:place];
  [field setStringValue:textOf(text)];
  [field setFont:font];
  [field setEditable:NO];
  [field setSelectable:NO];
  [field setBezeled:NO];
  [field setDrawsBackground:NO];
  [view addSubview:field];
  [field release];
}

/// Returns where the next one ends.
double addButton(NSView* view, double right, double width, NSString* title, SEL action) {
  // For good, as the buttons do not keep it.
  static FailureButtons* const target = [[FailureButtons alloc] init];
  NSButton* button =
      [[NSButton alloc] initWithFrame:NSMakeRect(right - width, kButtonY, width, kButtonHeight)];
  [button setTitle:title];
  [button setTarget:target];
  [button setAction:action];
  [view addSubview:button];
  [button release];
  return right - width - 12;
}

void makeWindow(const FailureNotice& notice) {
  failure = [[NSWindow alloc] initWithContentRect:kFailureWindow
                                        styleMask:0
                                          backing:NSBackingStoreBuffered
                                            defer:YES];
  [failure setReleasedWhenClosed:NO];
  // As that of the notice: for lists of windows, and what reads the screen aloud.
  [failure setTitle:[[NSProcessInfo processInfo] processName]];
  [failure setBackgroundColor:[NSColor whiteColor]];
  FailureView* content = [[FailureView alloc] initWithFrame:kFailureWindow];
  addText(content, kSentence, notice.sentence, [NSFont boldSystemFontOfSize:kSentenceSize]);
  addText(content, kCause, notice.cause, [NSFont userFixedPitchFontOfSize:kCauseSize]);
  double right = kFailureWindow.size.width - 20;
  right = addButton(content, right, 100, @"Close", @selector(closeWindow:));
  if (!notice.logFile.empty()) {
    addText(content, kLog, "Log: " + notice.logFile, [NSFont systemFontOfSize:kCauseSize]);
    right = addButton(content, right, 140, @"Show the log", @selector(showLog:));
  }
  addButton(content, right, 100, @"Copy", @selector(copyText:));
  [failure setContentView:content];
  [content release];
}

bool putOnScreen(const FailureNotice& notice) {
  bool isShown = false;
  platform::onMainThread([&] {
    const AutoreleasePool pool;
    if (!platform::isReadyForWindows()) return;
    // What is missing for words and buttons, a font say, is no reason to hold up the end.
    @try {
      told = &notice;
      makeWindow(notice);
      [failure center];
      platform::comeToFront();
      [failure makeKeyAndOrderFront:nil];
      isShown = true;
    } @catch (...) {
      logToSystem("A failure could not be shown.\n");
    }
  });
  return isShown;
}

void takeFailureDown() {
  platform::onMainThread([] {
    const AutoreleasePool pool;
    [failure close];
    [failure release];
    failure = nil;
    told = nullptr;
  });
}

NSPoint mouse() {
  NSPoint place = {};
  platform::onMainThread([&] {
    const AutoreleasePool pool;
    place = [NSClassFromString(@"NSEvent") mouseLocation];
  });
  return place;
}

/// Until the window is closed, or nobody seems to be there.
void waitForUser(int unattendedSeconds) {
  const NSPoint first = mouse();
  bool isAttended = false;
  for (int second = 0; isAttended || second < unattendedSeconds; ++second) {
    {
      std::unique_lock lock(mutex);
      if (closed.wait_for(lock, kBetweenLooks, [] { return isClosed; })) return;
    }
    const NSPoint now = mouse();
    isAttended = isAttended || now.x != first.x || now.y != first.y;
  }
}

void show(const FailureNotice& notice) {
  if (!putOnScreen(notice)) return;
  waitForUser(notice.unattendedSeconds);
  takeFailureDown();
}

}  // namespace

FailureCalls cocoaFailure() { return {.mayShow = platform::mayHaveWindows, .show = show}; }

}  // namespace quillory
