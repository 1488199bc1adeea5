// What the window of the splash is, as it is told to Cocoa. What it looks like is in
// splash_window_test.cpp.
#include "ui/splash_window_cocoa.h"

#include <gtest/gtest.h>

#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#import "tests/ui/cocoa_objects.h"
#include "ui/splash.h"
#import "ui/splash_view_cocoa.h"

namespace quillory {
namespace {

using testing::CapturedLog;
using testing::CocoaObjects;
using testing::ScopedReplace;

class SplashWindowObject : public CocoaObjects {
 protected:
  SplashWindowObject() : calls_(platformCalls.window, cocoaSplashWindow()) {
    splash::init();
    splash::showSplash();
  }
  ~SplashWindowObject() override { splash::cleanup(); }

  static NSWindow* window() {
    NSArray* windows = [NSApp windows];
    for (NSUInteger i = 0; i < [windows count]; ++i) {
      NSWindow* window = [windows objectAtIndex:i];
      if ([[window contentView] isKindOfClass:[SplashView class]]) return window;
    }
    return nil;
  }

 private:
  const CapturedLog log_;
  const ScopedReplace<splash::WindowCalls> calls_;
};

TEST_F(SplashWindowObject, HasNoBorderAndAShadowAndAWhiteBackground) {
  ASSERT_NE(window(), nil);
  EXPECT_EQ([window() styleMask], 0U);
  EXPECT_EQ([window() backingType], NSBackingStoreBuffered);
  EXPECT_TRUE([window() hasShadow]);
  EXPECT_TRUE([[window() backgroundColor] isEqual:[NSColor whiteColor]]);
}

TEST_F(SplashWindowObject, FloatsAboveOtherWindows) {
  ASSERT_NE(window(), nil);
  EXPECT_TRUE([window() isVisible]);
  EXPECT_EQ([window() level], NSFloatingWindowLevel);
}

TEST_F(SplashWindowObject, HasTheLevelOfTheKeyThatCocoaHasForFloatingWindows) {
  EXPECT_EQ(int{kCGFloatingWindowLevelKey}, 5);
  EXPECT_EQ(CGWindowLevelForKey(5), NSFloatingWindowLevel);
}

}  // namespace
}  // namespace quillory
