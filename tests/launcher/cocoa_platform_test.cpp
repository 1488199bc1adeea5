// What main() installs: every answer is Cocoa's.
#include "launcher/cocoa_platform.h"

#include <gtest/gtest.h>

#include <string>

#include "formats/downloads_cocoa.h"
#include "platform/support_cocoa.h"
#include "support/log.h"
#include "tests/harness/scoped_replace.h"
#include "ui/application_shell_cocoa.h"

namespace quillory {
namespace {

TEST(CocoaPlatform, AnswersEverythingByCocoa) {
  const Platform cocoa = cocoaPlatform();
  EXPECT_EQ(cocoa.systemLog, logThroughCocoa);
  EXPECT_EQ(cocoa.moveItem, moveThroughCocoa);
  EXPECT_EQ(cocoa.downloadFile, static_cast<decltype(cocoa.downloadFile)>(downloadThroughCocoa));
  EXPECT_EQ(cocoa.isMainThread, isMainThreadOfCocoa);
  EXPECT_EQ(cocoa.requestedUrl, latestRequestedUrl);
}

template <typename Member>
void expectOwnAnswer(Member cocoa, Member plain) {
  EXPECT_NE(cocoa, nullptr);
  EXPECT_NE(cocoa, plain);
}

TEST(CocoaPlatform, LeavesNoPlainAnswerForBundlesAndWindow) {
  const Platform cocoa = cocoaPlatform();
  const Platform& plain = platformCalls;
  expectOwnAnswer(cocoa.bundles.createBundle, plain.bundles.createBundle);
  expectOwnAnswer(cocoa.bundles.loadExecutable, plain.bundles.loadExecutable);
  expectOwnAnswer(cocoa.window.createWindow, plain.window.createWindow);
  expectOwnAnswer(cocoa.window.loadPicture, plain.window.loadPicture);
  expectOwnAnswer(cocoa.window.windowFrame, plain.window.windowFrame);
  expectOwnAnswer(cocoa.window.setWindowFrame, plain.window.setWindowFrame);
  expectOwnAnswer(cocoa.window.showWindow, plain.window.showWindow);
  expectOwnAnswer(cocoa.window.takeOffScreen, plain.window.takeOffScreen);
  expectOwnAnswer(cocoa.window.closeWindow, plain.window.closeWindow);
  expectOwnAnswer(cocoa.window.requestRedraw, plain.window.requestRedraw);
  expectOwnAnswer(cocoa.window.makeRedrawer, plain.window.makeRedrawer);
  expectOwnAnswer(cocoa.window.startRedrawThread, plain.window.startRedrawThread);
  expectOwnAnswer(cocoa.window.cancelRedrawThread, plain.window.cancelRedrawThread);
  expectOwnAnswer(cocoa.window.runOnMainThread, plain.window.runOnMainThread);
  expectOwnAnswer(cocoa.notice.show, plain.notice.show);
  expectOwnAnswer(cocoa.notice.takeDown, plain.notice.takeDown);
  expectOwnAnswer(cocoa.presence.leaveDock, plain.presence.leaveDock);
  expectOwnAnswer(cocoa.presence.beginWork, plain.presence.beginWork);
  expectOwnAnswer(cocoa.presence.endWork, plain.presence.endWork);
}

TEST(CocoaPlatform, TakesWhatIsLogged) {
  const testing::ScopedReplace installed(platformCalls, cocoaPlatform());
  ::testing::internal::CaptureStderr();
  logToSystem("[Rename] Unable to move item: %s", "why");
  EXPECT_TRUE(
      ::testing::internal::GetCapturedStderr().ends_with("] [Rename] Unable to move item: why\n"));
}

}  // namespace
}  // namespace quillory
