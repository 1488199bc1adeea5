#include "platform/toolkit.h"

#include "platform/autorelease_pool.h"
#include "platform/launch_gate.h"
#include "platform/macos/hidden_arguments.h"
#include "platform/macos/window_server.h"
#include "platform/main_thread.h"
#include "platform/waiting_loop.h"
#include "support/log.h"

namespace quillory::platform {
namespace {

// By the numbers that AppKit gives them: "regular" has an icon in the Dock and a menu, "prohibited"
// has neither, and no windows.
enum ActivationPolicy : NSInteger { kRegular = 0, kProhibited = 2 };

// NSActivityUserInitiated.
constexpr std::uint64_t kWhatTheUserWaitsFor = 0x00FFFFFF;

}  // namespace

void startToolkit(char* programName) {
  const AutoreleasePool pool;
  // Cocoa takes its locks only after a thread of its own was started; ours is a POSIX thread.
  NSThread* first = [[NSThread alloc] init];
  [first start];
  [first release];
  hideArguments(programName);
}

// The class itself, and none of our own: AWT takes over from a plain NSApplication only.
void prepareApplication() {
  const AutoreleasePool pool;
  if (hasWindowServer()) {
    [NSApplication sharedApplication];
  } else {
    logToSystem("There is no display: the splash is not shown.\n");
  }
}

bool isReadyForPictures() { return true; }

bool mayHaveWindows() { return hasWindowServer(); }

bool isReadyForWindows() { return NSApp != nil; }

void comeToFront() {
  [NSApp setActivationPolicy:kRegular];
  [NSApp activateIgnoringOtherApps:YES];
}

void leaveDock() { [NSApp setActivationPolicy:kProhibited]; }

void runMainLoop() {
  if (NSApp == nil) {
    keepLoopWaiting();
    for (;;) runLoopOnce();
  }
  if (![NSApp respondsToSelector:@selector(run)]) return;
  [NSApp performSelectorOnMainThread:@selector(run) withObject:nil waitUntilDone:YES];
}

NSDictionary* bundleInformation() { return [[NSBundle mainBundle] infoDictionary]; }

std::optional<std::string> bundleName() {
  const AutoreleasePool pool;
  const char* name = [[bundleInformation() objectForKey:@"CFBundleName"] UTF8String];
  if (name == nullptr) return std::nullopt;
  return name;
}

void beforeFirstRequest(void (*listen)()) { listen(); }

// What started the application comes as an event, which the run loop delivers while it launches:
// a start that has nothing to install can be faster.
void handleWaitingEvents() {
  if (NSApp == nil || [NSThread isMainThread]) return;
  constexpr std::chrono::seconds kPatience{1};
  endOfLaunch().waitFor(kPatience);
  // Whatever had come by then is behind us when the main thread gets to this.
  onMainThread([] {});
}

void* beginActivity(const char* reason) {
  const AutoreleasePool pool;
  return [[[NSProcessInfo processInfo]
      beginActivityWithOptions:kWhatTheUserWaitsFor
                        reason:[NSString stringWithUTF8String:reason]] retain];
}

void endActivity(void* activity) {
  if (activity == nullptr) return;
  const AutoreleasePool pool;
  id object = static_cast<id>(activity);
  [[NSProcessInfo processInfo] endActivity:object];
  [object release];
}

}  // namespace quillory::platform
