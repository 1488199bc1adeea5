// What a person sees while a runtime is downloaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/e2e/online_machine.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

using std::chrono::milliseconds;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kSplashBarHeight = 18;
constexpr char kSilentSwitch[] = "argument";  // with which every start is made

class OnlineSplash : public ::testing::Test {
 protected:
  /// Starts an installer whose archive stops coming in the middle, and waits until it does.
  void startDownload(const std::string& silentParameter) {
    publishRuntime(server_, "17", packedScriptRuntime());
    server_.answer(archivePath("17"),
                   answerStalled(packedScriptRuntime(), packedScriptRuntime().size() / 2));
    Tail tail = onlineTail(server_.url());
    tail.silentParameter = silentParameter;
    ChildOptions options = machine_.options();
    options.environment["DISPLAY"] = xServer_.display();
    start_ = machine_.startInBackground(tail, options);
    ASSERT_TRUE(
        start_->waitForOutput("Set destination file to " + machine_.master() + "/QuilloryTemp-"))
        << start_->out() << start_->err();
  }

  Picture bar(const WindowAt& window) const {
    return screen_.grab(
        {window.x, window.y + window.height - kSplashBarHeight, window.width, kSplashBarHeight});
  }

  XServer xServer_;
  Screen screen_{xServer_};
  HttpServer server_;
  OnlineMachine machine_;
  std::unique_ptr<BackgroundChild> start_;
};

TEST_F(OnlineSplash, ShowsAMovingBarAndTheLogSaysWhatComesFromWhere) {
  startDownload("");
  const std::vector<WindowAt> windows = screen_.shownWindows();
  ASSERT_EQ(windows.size(), 1U);
  EXPECT_GT(windows[0].height, kSplashBarHeight) << "the picture stands above the bar";
  const Picture before = bar(windows[0]);
  bool hasMoved = false;
  for (int i = 0; i < 100 && !hasMoved; ++i) {
    std::this_thread::sleep_for(milliseconds(20));
    hasMoved = !(bar(windows[0]) == before);
  }
  EXPECT_TRUE(hasMoved);
  EXPECT_THAT(start_->out(), HasSubstr("[JREDownload] Downloading JRE\n"));
  EXPECT_THAT(start_->err(),
              HasSubstr("Starting download from = " + server_.url(archivePath("17")) + "\n"));
}

TEST_F(OnlineSplash, StaysAwayFromASilentStart) {
  startDownload(kSilentSwitch);
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
}

TEST_F(OnlineSplash, IsGoneWhenTheApplicationStarts) {
  publishRuntime(server_, "17", packedScriptRuntime());
  ChildOptions options = machine_.options();
  options.environment["DISPLAY"] = xServer_.display();
  const ChildResult result = machine_.start(onlineTail(server_.url()), {}, options);
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_THAT(startedArguments(machine_.user()), ::testing::Contains("argument"));
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
}

}  // namespace
}  // namespace quillory::testing
