#include "ui/splash_window_cocoa.h"

#include <algorithm>

#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/toolkit.h"
#include "support/log.h"
#include "support/picture_limits.h"
#import "ui/redrawer_cocoa.h"
#include "ui/splash.h"
#import "ui/splash_view_cocoa.h"

namespace quillory {
namespace {

using platform::onMainThread;
using splash::Frame;
using splash::PictureSize;

// No window server takes a larger window.
constexpr double kMaxWindowPixels = 16384;

// All of it belongs to the main thread. `frame` stands for the window until there is one: every
// start makes one and takes it away again, and those that show none of it need no Cocoa for that.
NSWindow* win = nil;
SplashView* splashView = nil;
NSImage* splashImage = nil;
Frame frame = {};
bool isWanted = false;

NSRect windowRect(const Frame& wanted) {
  return NSMakeRect(wanted.x, wanted.y, std::clamp(wanted.width, 0.0, kMaxWindowPixels),
                    std::clamp(wanted.height, 0.0, kMaxWindowPixels));
}

void makeWindow() {
  const NSRect rect = windowRect(frame);
  win = [[NSWindow alloc] initWithContentRect:rect
                                    styleMask:0
                                      backing:NSBackingStoreBuffered
                                        defer:YES];
  [win setReleasedWhenClosed:NO];
  [win setBackgroundColor:[NSColor whiteColor]];
  [win setHasShadow:YES];
  const NSRect inside = NSMakeRect(0, 0, rect.size.width, rect.size.height);
  splashView = [[SplashView alloc] initWithFrame:inside];
  [splashView setPicture:splashImage];
  [win setContentView:splashView];
}

void createWindow(int width, int height) {
  onMainThread([=] {
    frame = {.x = 0, .y = 0, .width = double(width), .height = double(height)};
    isWanted = true;
  });
}

// The content of a picture that may be shown; nil, with a line that says why, for another.
NSData* pictureContent(const std::string& path) {
  const PictureFile picture = readPicture(path.c_str());
  if (picture.fault == PictureFault::kTooLarge)
    logToSystem("[Splash] The picture is too large to be shown.\n");
  if (picture.fault == PictureFault::kOtherFormat)
    logToSystem("[Splash] The picture is neither a PNG nor a JPEG, and is not shown.\n");
  if (picture.content.empty()) return nil;
  return [NSData dataWithBytes:picture.content.data() length:picture.content.size()];
}

// For screens with two pixels where others have one. It has the same size there, whatever its
// number of pixels is.
void addDoublePicture(NSImage* image, const char* path) {
  const std::string twin = doublePictureOf(path);
  NSData* content = twin.empty() ? nil : pictureContent(twin);
  if (content == nil) return;
  NSImageRep* bitmap = [NSBitmapImageRep imageRepWithData:content];
  [bitmap setSize:[image size]];
  if (bitmap != nil) [image addRepresentation:bitmap];
}

// nil when there is no picture to be had. Not by NSImage's own ways: GNUstep starts a pasteboard
// server for a file whose name says nothing, and releases an image without content once too often.
NSImage* newImage(const char* path) {
  NSData* content = pictureContent(path);
  if (content == nil || !platform::isReadyForPictures()) return nil;
  NSImageRep* bitmap = [NSBitmapImageRep imageRepWithData:content];
  if (bitmap == nil) return nil;
  NSImage* image = [[NSImage alloc] initWithSize:[bitmap size]];
  [image addRepresentation:bitmap];
  if (platform::kHasDoubleScreens) addDoublePicture(image, path);
  return image;
}

PictureSize loadPicture(const char* path) {
  PictureSize size = {};
  onMainThread([&] {
    const AutoreleasePool pool;
    [splashImage release];
    splashImage = newImage(path);
    if (splashImage != nil) size = {[splashImage size].width, [splashImage size].height};
    [splashView setPicture:splashImage];
  });
  return size;
}

Frame windowFrame() {
  Frame current = {};
  onMainThread([&current] {
    if (win == nil) {
      current = frame;
      return;
    }
    const NSRect rect = [win frame];
    current = {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
  });
  return current;
}

void setWindowFrame(Frame wanted) {
  onMainThread([wanted] {
    if (isWanted) frame = wanted;
    if (win == nil) return;
    const AutoreleasePool pool;
    const BOOL isAnimated = platform::kAnimatesResizing && [win isVisible] ? YES : NO;
    [win setFrame:windowRect(wanted) display:YES animate:isAnimated];
  });
}

void showWindow() {
  onMainThread([] {
    const AutoreleasePool pool;
    if (!isWanted || !platform::isReadyForWindows()) return;
    if (win == nil) makeWindow();
    [win setLevel:CGWindowLevelForKey(kCGFloatingWindowLevelKey)];
    [win center];
    [win makeKeyAndOrderFront:nil];
  });
}

void takeOffScreen() {
  onMainThread([] {
    if (win == nil) return;
    const AutoreleasePool pool;
    [win orderOut:nil];
  });
}

void closeWindow() {
  onMainThread([] {
    isWanted = false;
    frame = {};
    if (win == nil && splashImage == nil) return;
    const AutoreleasePool pool;
    [win close];
    [win release];
    win = nil;
    [splashView release];
    splashView = nil;
    [splashImage release];
    splashImage = nil;
  });
}

void requestRedraw() {
  onMainThread([] { [splashView requestRedraw]; });
}

void* makeRedrawer() {
  const AutoreleasePool pool;
  return [[Redrawer alloc] init];
}

void* startRedrawThread(void* redrawer) {
  NSThread* thread = nil;
  onMainThread([&] {
    const AutoreleasePool pool;
    thread = [[NSThread alloc] initWithTarget:static_cast<Redrawer*>(redrawer)
                                     selector:@selector(runThread:)
                                       object:splashView];
    // The system may have none left. The bar then stands still. The object is left as it is: it
    // counts as running, and its release would end the process.
    @try {
      [thread start];
    } @catch (...) {
      logToSystem("The splash is not animated: a thread was refused.\n");
      thread = nil;
    }
  });
  return thread;
}

void cancelRedrawThread(void* thread) {
  const AutoreleasePool pool;
  [static_cast<NSThread*>(thread) cancel];
  [static_cast<NSThread*>(thread) release];
}

void runOnMainThread(void (*work)()) { onMainThread(work); }

}  // namespace

splash::WindowCalls cocoaSplashWindow() {
  return {.createWindow = createWindow,
          .loadPicture = loadPicture,
          .windowFrame = windowFrame,
          .setWindowFrame = setWindowFrame,
          .showWindow = showWindow,
          .takeOffScreen = takeOffScreen,
          .closeWindow = closeWindow,
          .requestRedraw = requestRedraw,
          .makeRedrawer = makeRedrawer,
          .startRedrawThread = startRedrawThread,
          .cancelRedrawThread = cancelRedrawThread,
          .runOnMainThread = runOnMainThread};
}

}  // namespace quillory
