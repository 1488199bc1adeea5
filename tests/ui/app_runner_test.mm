#import "ui/app_runner_cocoa.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/log.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#import "tests/ui/cocoa_objects.h"
#include "ui/splash.h"

namespace quillory {
namespace {

using ::testing::ElementsAreArray;
using testing::CapturedLog;
using testing::CocoaObjects;
using testing::ScopedMethod;
using testing::ScopedReplace;

using AppRunnerThread = CocoaObjects;

// What is seen at every wait: the state of the bar and the seconds; and "off" when the window is
// taken off the screen.
std::vector<std::string> seen;

std::string step(int progress, double seconds) {
  return std::to_string(progress) + " for " + std::to_string(seconds);
}

void noteState(id, SEL, NSTimeInterval seconds) {
  seen.push_back(step(splash::progress(), seconds));
}

TEST_F(AppRunnerThread, ShowsEveryStateAndTakesTheWindowOffTheScreen) {
  const CapturedLog log;
  seen.clear();
  const ScopedReplace<void (*)()> off(
      platformCalls.window.takeOffScreen, +[] { seen.push_back("off"); });
  const ScopedMethod sleep(class_getClassMethod([NSThread class], @selector(sleepForTimeInterval:)),
                           noteState);
  splash::setProgress(50);
  AppRunner* runner = [[[AppRunner alloc] init] autorelease];
  [runner runThread:nil];

  std::vector<std::string> script = {step(-100, 1), step(-1, 1)};
  for (int percent = 0; percent <= 100; ++percent) script.push_back(step(percent, 0.03));
  for (const std::string& last : {step(-1, 1), step(-100, 1), std::string("off"), step(-100, 1)})
    script.push_back(last);
  EXPECT_THAT(seen, ElementsAreArray(script));
  EXPECT_THAT(log.messages(), ::testing::ElementsAre("AppRunner running!\n", "HideSplash"));
}

}  // namespace
}  // namespace quillory
