// The Cocoa objects one by one.
#import "tests/ui/cocoa_objects.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/launch_gate.h"
#include "platform/main_thread.h"
#include "support/open_requests.h"
#include "support/opened_files.h"
#include "support/platform.h"
#include "support/url_request.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#import "ui/application_delegate_cocoa.h"
#include "ui/application_shell_cocoa.h"
#import "ui/late_requests_cocoa.h"
#import "ui/menu_titles_cocoa.h"
#include "ui/progress_tiles.h"
#import "ui/redrawer_cocoa.h"
#import "ui/splash_view_cocoa.h"
#import "ui/url_events_cocoa.h"

// An event as the system makes it: the URL is its direct object.
@interface EventOfTest : NSAppleEventDescriptor {
 @public
  NSString* text;
}
@end

@implementation EventOfTest
- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword {
  return keyword == 0x2D2D2D2D ? self : nil;
}
- (NSString*)stringValue {
  return text;
}
- (id)copyWithZone:(NSZone*)zone {
  EventOfTest* copy = [[EventOfTest allocWithZone:zone] init];
  copy->text = text;
  return copy;
}
@end

/// The delegate that Java's toolkit puts in the place of ours.
@interface DelegateOfJava : NSObject {
 @public
  std::vector<std::string> seen;
}
- (void)_handleOpenURLEvent:(NSAppleEventDescriptor*)event
             withReplyEvent:(NSAppleEventDescriptor*)reply;
- (void)application:(NSApplication*)application openFiles:(NSArray*)paths;
@end

@implementation DelegateOfJava
- (void)_handleOpenURLEvent:(NSAppleEventDescriptor*)event
             withReplyEvent:(NSAppleEventDescriptor*)reply {
  (void)reply;
  NSString* url = [[event paramDescriptorForKeyword:0x2D2D2D2D] stringValue];
  seen.push_back(std::string("URL ") + [url UTF8String]);
}
- (void)application:(NSApplication*)application openFiles:(NSArray*)paths {
  (void)application;
  for (NSUInteger i = 0; i < [paths count]; ++i)
    seen.push_back(std::string("file ") + [[paths objectAtIndex:i] UTF8String]);
}
@end

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::Values;
using testing::CapturedLog;
using testing::CocoaObjects;
using testing::ScopedMethod;
using testing::ScopedReplace;
using testing::TempDir;

using MenuTitles = CocoaObjects;

// A main menu whose first submenu has these titles.
NSMenu* menuOf(NSString* first, NSString* second, NSString* third) {
  NSMenu* inner = [[[NSMenu alloc] initWithTitle:@"inner"] autorelease];
  [inner addItemWithTitle:first action:NULL keyEquivalent:@""];
  [inner addItemWithTitle:second action:NULL keyEquivalent:@""];
  [inner addItemWithTitle:third action:NULL keyEquivalent:@""];
  NSMenu* menu = [[[NSMenu alloc] initWithTitle:@"main"] autorelease];
  [menu addItemWithTitle:@"Apple" action:NULL keyEquivalent:@""];
  [menu addItemWithTitle:@"About %@" action:NULL keyEquivalent:@""];
  [menu setSubmenu:inner forItem:[menu itemAtIndex:0]];
  return menu;
}

std::string titleAt(NSMenu* menu, int place) {
  return [[[[menu itemAtIndex:0] submenu] itemAtIndex:place] title].UTF8String;
}

TEST_F(MenuTitles, GetTheName) {
  NSMenu* menu = menuOf(@"About %@", @"Hide %@", @"Quit %@ now");
  retitleApplicationMenu(menu, @"H\u00e4llo");
  EXPECT_EQ(titleAt(menu, 0), "About H\xc3\xa4llo");
  EXPECT_EQ(titleAt(menu, 1), "Hide H\xc3\xa4llo");
  EXPECT_EQ(titleAt(menu, 2), "Quit H\xc3\xa4llo now");
}

TEST_F(MenuTitles, WithoutAPlaceStayThemselves) {
  NSMenu* menu = menuOf(@"Preferences", @"", @"100 % sure");
  retitleApplicationMenu(menu, @"Hello");
  EXPECT_EQ(titleAt(menu, 0), "Preferences");
  EXPECT_EQ(titleAt(menu, 1), "");
  EXPECT_EQ(titleAt(menu, 2), "100 % sure");
}

TEST_F(MenuTitles, AreNotTakenForFormats) {
  NSMenu* menu = menuOf(@"%s %d %n %@", @"%@ %@", @"%1$s%%");
  retitleApplicationMenu(menu, @"%s%@");
  EXPECT_EQ(titleAt(menu, 0), "%s %d %n %s%@");
  EXPECT_EQ(titleAt(menu, 1), "%s%@ %s%@");
  EXPECT_EQ(titleAt(menu, 2), "%1$s%%");
}

TEST_F(MenuTitles, OfOtherMenusStay) {
  NSMenu* menu = menuOf(@"a", @"b", @"c");
  retitleApplicationMenu(menu, @"Hello");
  EXPECT_STREQ([[menu itemAtIndex:1] title].UTF8String, "About %@");
}

TEST_F(MenuTitles, NeedNoMenuAndNoName) {
  retitleApplicationMenu(nil, @"Hello");
  retitleApplicationMenu([[[NSMenu alloc] initWithTitle:@"empty"] autorelease], @"Hello");
  NSMenu* menu = [[[NSMenu alloc] initWithTitle:@"main"] autorelease];
  [menu addItemWithTitle:@"no submenu" action:NULL keyEquivalent:@""];
  retitleApplicationMenu(menu, @"Hello");
  NSMenu* unnamed = menuOf(@"About %@", @"b", @"c");
  retitleApplicationMenu(unnamed, nil);
  EXPECT_EQ(titleAt(unnamed, 0), "About %@");
}

using LoadImageFromByteArray = CocoaObjects;

TEST_F(LoadImageFromByteArray, TurnsBlueGreenRedIntoRedGreenBlue) {
  // Two rows of two pixels, and two bytes behind each row that are not pixels.
  const unsigned char table[] = {1, 2, 3, 4, 5, 6, 99, 98, 7, 8, 9, 10, 11, 12, 97, 96};
  NSImage* image = splash::loadImageFromByteArray(table, 2, 2);
  EXPECT_EQ([image size].width, 2);
  EXPECT_EQ([image size].height, 2);
  NSBitmapImageRep* bitmap = [[image representations] objectAtIndex:0];
  EXPECT_EQ([bitmap pixelsWide], 2);
  EXPECT_EQ([bitmap pixelsHigh], 2);
  EXPECT_EQ([bitmap bytesPerRow], 8);
  EXPECT_EQ([bitmap bitsPerPixel], 24);
  EXPECT_FALSE([bitmap hasAlpha]);
  const unsigned char* pixels = [bitmap bitmapData];
  EXPECT_EQ(std::vector(pixels, pixels + 6), (std::vector<unsigned char>{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(std::vector(pixels + 8, pixels + 14),
            (std::vector<unsigned char>{9, 8, 7, 12, 11, 10}));
  [image release];
}

using HandleURLEvent = CocoaObjects;

TEST_F(HandleURLEvent, KeepsTheLatestUrl) {
  const CapturedLog log;
  URLHandler* handler = [[[URLHandler alloc] init] autorelease];
  EXPECT_EQ([handler getRequestedURL], nullptr);
  EventOfTest* event = [[[EventOfTest alloc] init] autorelease];
  event->text = @"first:x";
  [handler handleURLEvent:event withReplyEvent:nil];
  const char* first = [handler getRequestedURL];
  event->text = @"second:%s \u00e4";
  [handler handleURLEvent:event withReplyEvent:nil];
  EXPECT_STREQ(first, "first:x") << "what was handed out stays";
  EXPECT_STREQ([handler getRequestedURL], "second:%s \xc3\xa4");
  EXPECT_THAT(log.messages(),
              ElementsAre("[Quillory] [URL] Request received to open URL first:x\n",
                          "[Quillory] [URL] Converted URL to 'first:x'\n",
                          "[Quillory] [URL] Request received to open URL second:%s \xc3\xa4\n",
                          "[Quillory] [URL] Converted URL to 'second:%s \xc3\xa4'\n"));
}

TEST_F(HandleURLEvent, KeepsAnEmptyUrlForAnEventWithoutOne) {
  const CapturedLog log;
  URLHandler* handler = [[[URLHandler alloc] init] autorelease];
  [handler handleURLEvent:nil withReplyEvent:nil];
  EXPECT_STREQ([handler getRequestedURL], "");
  EXPECT_THAT(log.messages(), ElementsAre("[Quillory] [URL] Request received to open URL (null)\n",
                                          "[Quillory] [URL] Converted URL to ''\n"));
}

using RegisterOSXEventListener = CocoaObjects;

struct {
  id handler;
  SEL selector;
  AEEventClass eventClass;
  AEEventID eventID;
} registered;

void noteRegistration(id, SEL, id handler, SEL selector, AEEventClass eventClass,
                      AEEventID eventID) {
  registered = {handler, selector, eventClass, eventID};
}

TEST_F(RegisterOSXEventListener, AsksForTheGetUrlEventWhoseCodesAreGURL) {
  const CapturedLog log;
  const ScopedReplace requestedUrl(platformCalls.requestedUrl, latestRequestedUrl);
  const ScopedMethod manager(class_getInstanceMethod([NSAppleEventManager class], @selector
                                                     (setEventHandler:
                                                          andSelector:forEventClass:andEventID:)),
                             noteRegistration);
  registerOSXEventListener();
  EXPECT_TRUE([registered.handler isKindOfClass:[URLHandler class]]);
  EXPECT_STREQ(sel_getName(registered.selector), "handleURLEvent:withReplyEvent:");
  EXPECT_EQ(registered.eventClass, 0x4755524CU);
  EXPECT_EQ(registered.eventID, 0x4755524CU);
  EventOfTest* event = [[[EventOfTest alloc] init] autorelease];
  event->text = @"demo:x";
  [registered.handler handleURLEvent:event withReplyEvent:nil];
  EXPECT_STREQ(getRequestedURL(), "demo:x");
}

using AppDelegate = CocoaObjects;

volatile std::sig_atomic_t terminations = 0;

TEST_F(AppDelegate, AnswersToQuitWithTheSignalThatLetsJavaEnd) {
  const CapturedLog log;
  terminations = 0;
  auto* const before = std::signal(SIGTERM, [](int) { terminations = terminations + 1; });
  EXPECT_EQ([ownDelegate() applicationShouldTerminate:NSApp], NSTerminateCancel);
  EXPECT_EQ(terminations, 1);
  std::signal(SIGTERM, before);
  EXPECT_THAT(log.messages(), ElementsAre("[Quillory] Asked to quit: ending as by SIGTERM\n"));
}

TEST_F(AppDelegate, TellsWhenTheLaunchIsOver) {
  [ownDelegate() applicationDidFinishLaunching:nil];
  EXPECT_TRUE(platform::endOfLaunch().waitFor(std::chrono::milliseconds(0)));
}

TEST_F(AppDelegate, KeepsFilesForTheLaunch) {
  const CapturedLog log;
  forgetOpenedFiles();
  [ownDelegate() application:NSApp
                   openFiles:[NSArray arrayWithObjects:@"/tmp/b c", @"/tmp/\u00e4", nil]];
  EXPECT_THAT(takeOpenedFiles(), ElementsAre("/tmp/b c", "/tmp/\xc3\xa4"));
  EXPECT_EQ(keptForJava(), 0U);
  forgetOpenedFiles();
}

using LateRequestsForJava = CocoaObjects;

void turnLoopUntilNothingIsKept() {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (keptForJava() > 0 && std::chrono::steady_clock::now() < end)
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                             beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
}

TEST_F(LateRequestsForJava, GoToTheDelegateThatComesAfterOurs) {
  const CapturedLog log;
  TempDir dir;
  takeOpenedFiles();
  passOpenRequestsTo(dir / "nobody listens");
  URLHandler* handler = [[[URLHandler alloc] init] autorelease];
  EventOfTest* event = [[[EventOfTest alloc] init] autorelease];
  event->text = @"late:x";
  [NSApp setDelegate:ownDelegate()];
  [handler handleURLEvent:event withReplyEvent:nil];
  [ownDelegate() application:NSApp openFiles:[NSArray arrayWithObject:@"/tmp/late"]];
  EXPECT_EQ(keptForJava(), 2U);
  DelegateOfJava* java = [[[DelegateOfJava alloc] init] autorelease];
  [NSApp setDelegate:java];
  turnLoopUntilNothingIsKept();
  [NSApp setDelegate:nil];
  EXPECT_THAT(java->seen, ElementsAre("URL late:x", "file /tmp/late"));
  passOpenRequestsTo("");
  forgetOpenedFiles();
}

using RedrawerThread = CocoaObjects;

// What the thread does, in order: how long it sleeps, and "redraw".
std::mutex stepsMutex;
std::vector<std::string> steps;

void addStep(const std::string& step) {
  const std::lock_guard lock(stepsMutex);
  steps.push_back(step);
  if (steps.size() >= 6) [[NSThread currentThread] cancel];
}

void noteSleep(id, SEL, NSTimeInterval seconds) { addStep(std::to_string(seconds)); }

void noteRequest(id, SEL, SEL request, id, BOOL waits) {
  addStep(std::string(sel_getName(request)) + (waits ? " waits" : ""));
}

TEST_F(RedrawerThread, AsksForARedrawEvery30Milliseconds) {
  const CapturedLog log;
  steps.clear();
  const ScopedMethod sleep(class_getClassMethod([NSThread class], @selector(sleepForTimeInterval:)),
                           noteSleep);
  const ScopedMethod request(class_getInstanceMethod([NSObject class], @selector
                                                     (performSelectorOnMainThread:
                                                                       withObject:waitUntilDone:)),
                             noteRequest);
  SplashView* view = [[SplashView alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
  Redrawer* redrawer = [[Redrawer alloc] init];
  NSThread* thread = [[NSThread alloc] initWithTarget:redrawer
                                             selector:@selector(runThread:)
                                               object:view];
  [thread start];
  while (![thread isFinished]) std::this_thread::yield();
  [thread release];
  [redrawer release];
  [view release];
  EXPECT_THAT(steps, ElementsAre("0.030000", "requestBarRedraw", "0.030000", "requestBarRedraw",
                                 "0.030000", "requestBarRedraw"));
}

TEST_F(RedrawerThread, EndsSoonAfterItIsCancelled) {
  const CapturedLog log;
  Redrawer* redrawer = [[Redrawer alloc] init];
  NSThread* thread = [[NSThread alloc] initWithTarget:redrawer
                                             selector:@selector(runThread:)
                                               object:nil];
  [thread start];
  [NSThread sleepForTimeInterval:0.1];
  EXPECT_FALSE([thread isFinished]);
  [thread cancel];
  for (int wait = 0; wait < 500 && ![thread isFinished]; ++wait)
    [NSThread sleepForTimeInterval:0.01];
  EXPECT_TRUE([thread isFinished]);
  EXPECT_THAT(log.messages(), ElementsAre("Redrawer running!\n"));
}

using MainThread = CocoaObjects;

TEST_F(MainThread, AnExceptionOfCocoaEndsThePieceOfWorkAlone) {
  static std::vector<std::string> lines;
  lines.clear();
  const ScopedReplace log(
      platformCalls.systemLog, +[](const char* line) { lines.emplace_back(line); });
  bool isReached = false;
  platform::onMainThread([&] {
    [NSException raise:@"NSOfTest" format:@"no window"];
    isReached = true;
  });
  EXPECT_FALSE(isReached);
  EXPECT_THAT(lines, ElementsAre("Something could not be shown.\n"));
}

}  // namespace
}  // namespace quillory
