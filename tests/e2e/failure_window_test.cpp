// What a person sees of a start that fails: the parameter "error_dialog", with the real launcher
// over an installation that is put together by hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr WindowAt kWindow = {(1024 - 640) / 2, (768 - 300) / 2, 640, 300};
/// The middle of the button "Close", from the upper left corner.
constexpr int kCloseX = 570;
constexpr int kCloseY = 270;

class FailureWindow : public ::testing::Test {
 protected:
  FailureWindow() {
    installRuntime(user_.master());
    fs::create_directories(updater());
    fs::copy_file(QUILLORY_REPORT_JAR, updater() + "/report.jar");
    writeFile(updater() + "/QuilloryLaunch", launchFileBytes());
    fs::create_directories(user_.master() + "/Quillory-Demo-3-complete");
  }
  std::string updater() const { return user_.master() + "/Quillory-Quillory-1-complete"; }

  void startWith(const Parameters& parameters, const std::vector<std::string>& arguments) {
    Tail tail;
    tail.appVersion = "3";
    tail.jreVersion = "17";
    tail.silentParameter = "silent";
    Parameters all = {{"jre_name", "JRE"}};
    all.insert(all.end(), parameters.begin(), parameters.end());
    const HandMadeBundle bundle(folder_ / std::to_string(++bundles_), tail, all);
    ChildOptions options = user_.options();
    if (hasDisplay_) options.environment["DISPLAY"] = server_.display();
    std::vector<std::string> command = {bundle.executable()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    child_.emplace(command, options);
  }
  bool isShown() const {
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{kWindow}; });
  }
  /// Whether there are letters in a part of the window.
  bool hasInk(int y, int height) const {
    return screen_.hasInk({kWindow.x + 20, kWindow.y + y, 600, height});
  }
  ChildResult close() {
    const auto press = [&] { server_.click(kWindow.x + kCloseX, kWindow.y + kCloseY); };
    EXPECT_TRUE(actUntil(press, [&] { return screen_.shownWindows().empty(); }));
    return child_->finish();
  }

  TempDir folder_;
  XServer server_;
  Screen screen_{server_};
  TestUser user_;
  bool hasDisplay_ = true;
  int bundles_ = 0;
  std::optional<BackgroundChild> child_;
};

const Parameters kTold = {{"error_dialog", "true"}};

TEST_F(FailureWindow, ShowsWhatAMainClassHasThrownAtOnce) {
  startWith(kTold, {"--throw"});
  ASSERT_TRUE(isShown()) << child_->out() << child_->err();
  EXPECT_TRUE(eventually([&] { return hasInk(16, 40) && hasInk(64, 140) && hasInk(210, 34); }))
      << "the sentence, the cause and the log";
  EXPECT_EQ(server_.windowsNamed("launcher"), 1);
  const ChildResult result = close();
  EXPECT_EQ(result.exitStatus, 0) << "as without a window";
  EXPECT_THAT(result.err, HasSubstr("java.lang.IllegalStateException: thrown on purpose"));
}

TEST_F(FailureWindow, ShowsWhyThereIsNoJvm) {
  LaunchFile unfit;
  unfit.memory = "99999999999";
  writeFile(updater() + "/QuilloryLaunch", launchFileBytes(unfit));
  startWith(kTold, {});
  ASSERT_TRUE(isShown()) << child_->out() << child_->err();
  EXPECT_TRUE(eventually([&] { return hasInk(64, 140); })) << "what the JVM said";
  close();
}

TEST_F(FailureWindow, ShowsAnErrorOfTheLauncherAndEndsWithItsStatus) {
  fs::remove(updater() + "/QuilloryLaunch");
  startWith(kTold, {});
  ASSERT_TRUE(isShown()) << child_->out() << child_->err();
  const ChildResult result = close();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("Unable to open launch file"));
}

TEST_F(FailureWindow, IsNotThereForWhoDoesNotWantItOrCannotSeeIt) {
  fs::remove(updater() + "/QuilloryLaunch");
  // Each of them would go on for as long as the window is there.
  startWith({}, {});
  EXPECT_EQ(child_->finish().exitStatus, 1);
  startWith(kTold, {"silent"});
  EXPECT_EQ(child_->finish().exitStatus, 1);
  startWith(kTold, {"QYPREPARE_FOR_LAUNCH_ONLY"});
  EXPECT_EQ(child_->finish().exitStatus, 0);
  hasDisplay_ = false;
  startWith(kTold, {});
  EXPECT_EQ(child_->finish().exitStatus, 1);
}

TEST_F(FailureWindow, IsNotThereForWhatTheApplicationItselfEndsWith) {
  startWith(kTold, {"--exit=3"});
  EXPECT_EQ(child_->finish().exitStatus, 3);
  EXPECT_TRUE(screen_.shownWindows().empty());
}

}  // namespace
}  // namespace quillory::testing
