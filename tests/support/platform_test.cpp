// The answers that stand without a Cocoa.
#include "support/platform.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace quillory {
namespace {

TEST(PlatformCalls, WriteTheSystemLogToStandardErrorALineEach) {
  ::testing::internal::CaptureStderr();
  platformCalls.systemLog("ended\n");
  platformCalls.systemLog("not ended");
  platformCalls.systemLog("");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "ended\nnot ended\n\n");
}

TEST(PlatformCalls, MoveNothing) {
  std::string error;
  EXPECT_FALSE(platformCalls.moveItem("/tmp/no such a", "/tmp/no such b", error));
  EXPECT_EQ(error, "there is no file manager on this system");
}

TEST(PlatformCalls, HaveNoTransportNoBundlesAndNoListener) {
  EXPECT_EQ(platformCalls.downloadFile, nullptr);
  EXPECT_EQ(platformCalls.bundles.createBundle("/"), nullptr);
  EXPECT_FALSE(platformCalls.bundles.loadExecutable(nullptr));
  EXPECT_EQ(platformCalls.requestedUrl, nullptr);
}

TEST(PlatformCalls, TakeTheThreadThatInitialisedTheProgramForTheMainThread) {
  EXPECT_TRUE(platformCalls.isMainThread());
  bool isMain = true;
  std::thread([&] { isMain = platformCalls.isMainThread(); }).join();
  EXPECT_FALSE(isMain);
}

TEST(PlatformCalls, HaveAWindowOfNoSizeAndRunWorkAtOnce) {
  const splash::Frame frame = platformCalls.window.windowFrame();
  EXPECT_EQ(frame.width, 0);
  EXPECT_EQ(frame.height, 0);
  const splash::PictureSize size = platformCalls.window.loadPicture("/no/picture");
  EXPECT_EQ(size.width, 0);
  EXPECT_EQ(size.height, 0);
  static bool isDone = false;
  platformCalls.window.runOnMainThread([] { isDone = true; });
  EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace quillory
