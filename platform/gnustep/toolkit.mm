#include "platform/toolkit.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "platform/autorelease_pool.h"
#include "platform/gnustep/display.h"
#include "platform/gnustep/early_texts.h"
#include "platform/gnustep/foundation_library.h"
#include "platform/gnustep/info_plist.h"
#include "platform/gnustep/main_loop.h"
#include "platform/gnustep/main_loop_source.h"
#include "platform/gnustep/own_process.h"
#include "platform/gnustep/request_bus.h"
#include "platform/gnustep/run_loop_turns.h"
#include "platform/gnustep/scoped_encodings.h"
#include "platform/gnustep/scoped_environment.h"
#include "platform/gnustep/scoped_signals.h"
#include "platform/gnustep/user_entry.h"
#include "platform/gnustep/window_library.h"
#include "platform/waiting_loop.h"
#include "support/log.h"
#import "this_thread.h"

namespace quillory::platform {
namespace {

enum class Windows { kNotAskedFor, kReady, kUnavailable };
Windows windows = Windows::kNotAskedFor;

void goOnWithoutDisplay() {
  windows = Windows::kUnavailable;
  logToSystem("There is no display: the splash is not shown.\n");
}

// None of these is for the user to set: they keep GNUstep from probing the window manager and from
// showing an icon window of its own.
void registerDefaults() {
  NSDictionary* defaults =
      [NSDictionary dictionaryWithObjectsAndKeys:@"NO", @"GSX11HandlesWindowDecorations", @"YES",
                                                 @"GSSuppressAppIcon", nil];
  [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
}

// The user's settings for other programs of this toolkit are none of ours, and whoever reads them
// takes a lock in the home folder: one that a killed process left behind holds up the next by 20
// seconds. So they are looked for where there are none and none can be: of a start that takes
// longer than half a minute the toolkit would make the folder, in the user's home.
void ignoreUserSettings() {
  constexpr NSUInteger kLongerThanAnyName = 300;
  NSString* impossible = [@"" stringByPaddingToLength:kLongerThanAnyName
                                           withString:@"x"
                                      startingAtIndex:0];
  NSMutableDictionary* configuration = GNUstepConfig(nil);
  [configuration setObject:@"" forKey:@"GNUSTEP_USER_CONFIG_FILE"];
  [configuration setObject:impossible forKey:@"GNUSTEP_USER_DEFAULTS_DIR"];
  GNUstepConfig(configuration);
}

// Without these two variables half of the time goes to picture formats and compose keys that the
// splash never uses. They are put back before the thread that waits for the window goes on, so no
// child process inherits them.
bool makeApplication() {
  const ScopedSignals signals;
  const ScopedEnvironment noOtherFormats("MAGICK_CODER_MODULE_PATH", "/nonexistent");
  const ScopedEnvironment noComposeKeys("XCOMPOSEFILE", "/dev/null");
  registerDefaults();
  keepToOwnProcess();
  @try {
    NSApp = [NSApplication sharedApplication];
    return NSApp != nil;
  } @catch (...) {
    NSApp = nil;
    return false;
  }
}

void handleNextEvent() {
  const AutoreleasePool pool;
  @try {
    NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                        untilDate:[NSDate distantFuture]
                                           inMode:NSDefaultRunLoopMode
                                          dequeue:YES];
    if (event != nil) [NSApp sendEvent:event];
  } @catch (...) {
    // What goes wrong with a picture on the screen is no reason to end an installation.
    logToSystem("An event of the splash window could not be handled.\n");
    [NSThread sleepForTimeInterval:0.03];
  }
}

// A user of no language, such as that of a container, would have ASCII only: Java could not open
// its own files below a home folder with an "ö". On macOS paths are UTF-8, whatever the language.
void assumeUtf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* language = std::getenv(name);
    if (language != nullptr && *language != '\0') return;
  }
  setenv("LC_CTYPE", "C.UTF-8", 1);
}

// Of the main thread.
char* program = nullptr;
bool isFoundationThere = false;

// Perhaps beside a JVM that begins, so that no signal is put back here. SIGPIPE is the one that
// Foundation changes, and only where nobody handles it: see outliveReaders().
void bringFoundationUp() {
  const ScopedEncodings encodings;
  loadFoundationLibrary();
  char* arguments[] = {program, nullptr};
  [NSProcessInfo initializeWithArguments:arguments count:1 environment:environ];
  const AutoreleasePool pool;
  ignoreUserSettings();
}

// For needFoundation(). On the main thread always, which Foundation takes for the one that it was
// loaded on.
void bringFoundation() {
  if (!isMainThread()) {
    mainLoop().perform([](void*) { bringFoundation(); }, nullptr);
  } else if (!isFoundationThere) {
    isFoundationThere = true;  // for the pools on the way
    bringFoundationUp();
    foundationBringer.store(nullptr, std::memory_order_release);
  }
}

}  // namespace

void startToolkit(char* programName) {
  provideUserEntry();
  assumeUtf8();
  program = programName;
  if (!isFoundationThere) foundationBringer = bringFoundation;
  const ScopedSignals signals;
  // What is hidden from it can be hidden only while no other thread reads it.
  if (!isFoundationLate() || areTextsHidden()) bringFoundation();
  restoreTexts();
}

void prepareApplication() {
  if (!isDisplayNamed()) goOnWithoutDisplay();
}

bool isReadyForPictures() { return loadWindowLibrary(); }

bool mayHaveWindows() { return isDisplayNamed(); }

bool isReadyForWindows() {
  if (windows != Windows::kNotAskedFor) return windows == Windows::kReady;
  // NOLINTNEXTLINE(bugprone-branch-clone): what is tried, in this order
  if (!isDisplayReachable()) {
    goOnWithoutDisplay();
  } else if (!loadWindowLibrary()) {
    windows = Windows::kUnavailable;  // Which has been said.
  } else if (makeApplication()) {
    windows = Windows::kReady;
  } else {
    goOnWithoutDisplay();
  }
  return windows == Windows::kReady;
}

// The window server makes no difference between programs.
void comeToFront() {}

void leaveDock() {}

void runMainLoop() {
  while (!isFoundationThere) mainLoop().waitAndHandle();
  keepLoopWaiting();
  joinMainLoop();
  while (windows != Windows::kReady) runLoopOnce();
  endTurnsBeforeSecondWait();
  // Not by GNUstep's own loop: it starts a notification daemon that outlives the process, and takes
  // 50 ms for its first turn. The splash needs the events only.
  for (;;) handleNextEvent();
}

// Not by NSBundle: it does not know the layout that bundles have on macOS. Nor by any class that is
// used here for the first time: the run thread is at work already.
NSDictionary* bundleInformation() {
  NSMutableDictionary* information = [NSMutableDictionary dictionary];
  for (const auto& [key, text] : textsOfInfoPlist(ownInfoPlist())) {
    NSString* value = [NSString stringWithUTF8String:text.c_str()];
    NSString* name = [NSString stringWithUTF8String:key.c_str()];
    if (name != nil && value != nil) [information setObject:value forKey:name];
  }
  return information;
}

std::optional<std::string> bundleName() {
  const auto information = textsOfInfoPlist(ownInfoPlist());
  const auto found = information.find("CFBundleName");
  if (found == information.end()) return std::nullopt;
  return found->second;
}

void beforeFirstRequest(void (*listen)()) {
  if (isFoundationThere) {
    listen();
    return;
  }
  static void (*putOff)() = nullptr;
  putOff = listen;
  listenToBus([](const char* url) {
    needFoundation();
    // Which leads the requests to where they belong.
    if (auto* const now = std::exchange(putOff, nullptr)) now();
    handRequestOver(url);
  });
}

void handleWaitingEvents() {
  if (isMainThread()) {
    handleWaitingCalls();
  } else {
    mainLoop().perform([](void*) { handleWaitingCalls(); }, nullptr);
  }
}

// No desktop slows down a program that has no window.
void* beginActivity(const char*) { return nullptr; }

void endActivity(void*) {}

}  // namespace quillory::platform
