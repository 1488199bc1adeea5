// The program on a real screen, with a shell script for quillory-update.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/stand_in_program.h"
#include "tests/ui/x_server.h"
#include "update_window/layout.h"

namespace quillory::window {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace quillory::testing;
using ::testing::HasSubstr;

constexpr int kWide = static_cast<int>(kWidth);
constexpr int kHigh = static_cast<int>(kHeight);
constexpr WindowAt kWindow = {(1024 - kWide) / 2, (768 - kHigh) / 2, kWide, kHigh};
constexpr std::uint32_t kWhite = 0xFFFFFF;

/// A pixel of the window, from its lower left corner, as the layout counts.
std::uint32_t pixelAt(const Picture& picture, double x, double y) {
  return picture.at(static_cast<int>(x), kHigh - 1 - static_cast<int>(y));
}

int red(std::uint32_t pixel) { return static_cast<int>(pixel >> 16); }
int blue(std::uint32_t pixel) { return static_cast<int>(pixel & 0xFF); }
bool isFill(std::uint32_t pixel) { return red(pixel) < 80 && blue(pixel) > 150; }
bool isTrack(std::uint32_t pixel) { return pixel != kWhite && red(pixel) > 200; }

/// Whether there is ink in a box, such as letters.
bool hasInk(const Picture& picture, const Box& box) {
  for (double y = box.y; y < box.y + box.height; ++y)
    for (double x = box.x; x < box.x + box.width; ++x)
      if (red(pixelAt(picture, x, y)) < 160) return true;
  return false;
}

// What the Objective-C libraries keep counts as leaked.
constexpr char kNoLeaks[] = "detect_leaks=0";

class UpdateWindow : public ::testing::Test {
 protected:
  UpdateWindow() : screen_(server_) {
    fs::copy_file(QUILLORY_UPDATE_WINDOW, dir_ / "quillory-update-window");
    writeFile(dir_ / "properties", "qystat_app_name\0Demo\0"s);
  }

  void start(const std::string& script, const std::string& mode = "--first") {
    writeProgram(dir_ / "quillory-update", "#!/bin/sh\n" + script + "\n");
    ChildOptions options;
    options.environment = {{"DISPLAY", server_.display()}, {"ASAN_OPTIONS", kNoLeaks}};
    process_.emplace(std::vector<std::string>{dir_ / "quillory-update-window", mode, "--properties",
                                              dir_ / "properties"},
                     options);
  }
  Picture picture() const { return screen_.grab(kWindow); }
  bool isShown() const {
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{kWindow}; });
  }
  /// As a user does with the mouse.
  void click(const Box& box) const {
    ChildOptions options;
    options.environment = {{"DISPLAY", server_.display()}};
    const int x = kWindow.x + static_cast<int>(box.x + box.width / 2);
    const int y = kWindow.y + kHigh - static_cast<int>(box.y + box.height / 2);
    const ChildResult result = runChild(
        {"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click", "1"}, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
  }

  TempDir dir_;
  XServer server_;
  Screen screen_;
  std::optional<BackgroundChild> process_;
};

const Box kOnlyButton = buttonBox(kWidth - kMargin, 0);

TEST_F(UpdateWindow, ShowsHowMuchIsLoadedAndEndsWithTheUpdate) {
  start(
      "echo offer version=2 shown=1.2 size=40\necho progress done=10 total=40 rate=5 rest=6\n"
      "while [ ! -e '" +
      (dir_ / "go") +
      "' ]; do sleep 0.02; done\n"
      "echo progress done=40 total=40\n"
      "while [ ! -e '" +
      (dir_ / "end") + "' ]; do sleep 0.02; done");
  ASSERT_TRUE(isShown());
  const double middle = kBar.y + kBar.height / 2;
  const double quarter = kBar.x + kBar.width / 4;
  ASSERT_TRUE(eventually([&] { return isFill(pixelAt(picture(), quarter - 8, middle)); }));
  const Picture first = picture();
  EXPECT_TRUE(isFill(pixelAt(first, kBar.x + 3, middle)));
  EXPECT_TRUE(isTrack(pixelAt(first, quarter + 3, middle)));
  EXPECT_TRUE(isTrack(pixelAt(first, kBar.x + kBar.width - 3, middle)));
  EXPECT_EQ(pixelAt(first, kBar.x - 3, middle), kWhite);
  EXPECT_TRUE(hasInk(first, kHeading));
  EXPECT_TRUE(hasInk(first, kText));
  EXPECT_TRUE(hasInk(first, kDetail));
  EXPECT_TRUE(hasInk(first, kOnlyButton));
  EXPECT_NE(pixelAt(first, 0, 0), kWhite) << "an edge, on a white screen too";

  writeFile(dir_ / "go", "");
  EXPECT_TRUE(
      eventually([&] { return isFill(pixelAt(picture(), kBar.x + kBar.width - 3, middle)); }));
  writeFile(dir_ / "end", "");
  EXPECT_EQ(process_->finish().exitStatus, 0);
  EXPECT_TRUE(screen_.shownWindows().empty());
}

TEST_F(UpdateWindow, CancelsWhenItsButtonIsPressed) {
  start("trap 'touch \"" + (dir_ / "cancelled") +
        "\"; exit 1' TERM\n"
        "echo progress done=1 total=2\nwhile :; do sleep 0.02; done");
  ASSERT_TRUE(isShown());
  ASSERT_TRUE(eventually([&] { return hasInk(picture(), kOnlyButton); }));
  click(kOnlyButton);
  EXPECT_EQ(process_->finish().exitStatus, 5);
  EXPECT_TRUE(fs::exists(dir_ / "cancelled"));
}

TEST_F(UpdateWindow, TriesAgainAfterAFailure) {
  start("[ -e '" + (dir_ / "second") +
        "' ] && exit 0\n"
        "touch '" +
        (dir_ / "second") + "'\necho failed reason=no%20line retry=1\nexit 1");
  ASSERT_TRUE(isShown());
  const Box tryAgain = kOnlyButton;
  ASSERT_TRUE(eventually(
      [&] { return isFill(pixelAt(picture(), tryAgain.x + tryAgain.width / 2, tryAgain.y + 3)); }));
  const Picture failed = picture();
  EXPECT_TRUE(hasInk(failed, kErrorText));
  EXPECT_TRUE(hasInk(failed, kErrorDetail));
  click(tryAgain);
  EXPECT_EQ(process_->finish().exitStatus, 0);
}

TEST_F(UpdateWindow, AsksWhatTheUserWantsAndSaysWhenItIsReady) {
  start(
      "if [ $1 = status ]; then echo status phase=AVAILABLE offered=2 size=40; fi\n"
      "if [ $1 = install ]; then echo done version=2; fi",
      "--ask");
  ASSERT_TRUE(isShown());
  const Box load = buttonBox(kWidth - kMargin, 70);
  const auto isLoadShown = [&](const Picture& now) {
    return isFill(pixelAt(now, load.x + load.width / 2, load.y + 3));
  };
  ASSERT_TRUE(eventually([&] { return isLoadShown(picture()); }));
  const Picture asked = picture();
  EXPECT_TRUE(hasInk(asked, kHeading));
  EXPECT_TRUE(hasInk(asked, kText));
  EXPECT_TRUE(hasInk(asked, {kMargin, kButtonY, 200, kButtonHeight})) << "skip";
  ASSERT_TRUE(actUntil([&] { click(load); }, [&] { return !isLoadShown(picture()); }));
  ASSERT_TRUE(eventually([&] { return hasInk(picture(), kOnlyButton); }));
  click(kOnlyButton);
  EXPECT_EQ(process_->finish().exitStatus, 0);
}

TEST_F(UpdateWindow, OfAnUpdateThatThereIsNotIsNeverSeen) {
  start("echo phase name=CHECKING\necho none newest=2", "--update");
  EXPECT_EQ(process_->finish().exitStatus, 0);
  EXPECT_TRUE(screen_.shownWindows().empty());
}

TEST(UpdateWindowWithoutADisplay, TellsItInLines) {
  const TempDir dir;
  fs::copy_file(QUILLORY_UPDATE_WINDOW, dir / "quillory-update-window");
  writeProgram(dir / "quillory-update",
               "#!/bin/sh\necho offer version=2 size=40\necho failed reason=no%20line retry=1\n"
               "exit 1\n");
  ChildOptions options;
  options.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
  options.environment = {{"ASAN_OPTIONS", kNoLeaks}};
  const ChildResult result =
      runChild({dir / "quillory-update-window", "--first", "--properties", dir / "none"}, options);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("[Update] Installing the application 2\n"));
  EXPECT_THAT(result.err, HasSubstr("[Update] the application could not be installed\n"));
  EXPECT_THAT(result.err, HasSubstr("[Update]   no line  Check the connection"));
}

TEST(UpdateWindowProgram, SaysHowItIsUsed) {
  ChildOptions options;
  options.environment = {{"ASAN_OPTIONS", kNoLeaks}};
  EXPECT_THAT(runChild({QUILLORY_UPDATE_WINDOW, "--help"}, options).out,
              HasSubstr("exit status: 0 done"));
  const ChildResult wrong = runChild({QUILLORY_UPDATE_WINDOW, "--first"}, options);
  EXPECT_EQ(wrong.exitStatus, 2);
  EXPECT_THAT(wrong.err, HasSubstr("quillory-update-window: --properties is missing\n"));
}

}  // namespace
}  // namespace quillory::window
