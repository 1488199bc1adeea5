#include "ui/for_embedders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/platform.h"
#include "tests/harness/scoped_replace.h"
#include "tests/ui/recorded_splash.h"
#include "ui/splash.h"

namespace quillory::splash {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using testing::ScopedReplace;

using HideProgress = Splash;

std::vector<int> statesAtRedraw;

TEST_F(HideProgress, StoresTheStateBeforeItAsksForARedraw) {
  setProgress(10);
  statesAtRedraw.clear();
  const ScopedReplace<void (*)()> redraw(
      platformCalls.window.requestRedraw, +[] { statesAtRedraw.push_back(progress()); });
  hideProgress();
  EXPECT_THAT(statesAtRedraw, ElementsAre(kProgressHidden));
}

TEST_F(HideProgress, ShrinksTheWindow) {
  setProgress(10);
  asked.clear();
  hideProgress();
  EXPECT_EQ(progress(), kProgressHidden);
  EXPECT_THAT(asked, ElementsAre("frame 100 100 400 200", "redraw"));
}

TEST_F(HideProgress, LeavesTheSizeOfAWindowWithoutBar) {
  hideProgress();
  EXPECT_THAT(asked, ElementsAre("redraw"));
}

TEST_F(HideProgress, LeavesTheAnimationRunning) {
  setProgress(kProgressIndefinite);
  asked.clear();
  hideProgress();
  EXPECT_THAT(asked, ElementsAre(_, "redraw"));
  setProgress(5);
  EXPECT_THAT(asked, ::testing::Contains("cancel 1"));
}

using GetSplashBuffer = Splash;

TEST_F(GetSplashBuffer, IsTheMarginThatWasSet) {
  EXPECT_EQ(getSplashBuffer(), 0);
  setSplashBuffer(10);
  EXPECT_EQ(getSplashBuffer(), 10);
  setSplashBuffer(-3);
  EXPECT_EQ(getSplashBuffer(), -3);
}

}  // namespace
}  // namespace quillory::splash
