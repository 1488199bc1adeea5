// What a person sees of a start.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "tests/e2e/halted_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr int kBarHeight = 18;
constexpr std::uint32_t kWhite = 0xFFFFFF;

/// Four quarters of different colours, from the upper left one by rows: no other way round looks
/// the same.
struct Quarters {
  int width, height;
  std::uint32_t colours[4];
  std::uint32_t at(int x, int y) const {
    return colours[(y < height / 2 ? 0 : 2) + (x < width / 2 ? 0 : 1)];
  }
};

constexpr Quarters kOwn = {120, 80, {0xC02040, 0x20C040, 0x4020C0, 0xE0C010}};
constexpr Quarters kOther = {200, 60, {0x101010, 0x00FFFF, 0xFF00FF, 0x808080}};

std::string hexColour(std::uint32_t colour) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "xc:#";
  for (int shift = 20; shift >= 0; shift -= 4) text.push_back(kDigits[colour >> shift & 0xF]);
  return text;
}

/// A PNG file of it, by ImageMagick.
void paint(const Quarters& picture, const std::string& path) {
  std::vector<std::string> command = {
      "convert-im6.q16", "-size",
      std::to_string(picture.width / 2) + "x" + std::to_string(picture.height / 2)};
  for (const int row : {0, 2})
    command.insert(command.end(), {"(", hexColour(picture.colours[row]),
                                   hexColour(picture.colours[row + 1]), "+append", ")"});
  command.insert(command.end(), {"-append", path});
  const ChildResult result = runChild(command);
  if (result.exitStatus != 0) throw std::runtime_error("no picture: " + result.err);
}

/// The window's whole content above the bar.
Picture splashOf(const Quarters& picture, int buffer) {
  Picture splash(picture.width + 2 * buffer, picture.height + 2 * buffer);
  for (int y = 0; y < splash.height(); ++y) {
    for (int x = 0; x < splash.width(); ++x) {
      const bool isInside =
          x >= buffer && x < buffer + picture.width && y >= buffer && y < buffer + picture.height;
      splash.at(x, y) = isInside ? picture.at(x - buffer, y - buffer) : kWhite;
    }
  }
  return splash;
}

class DisplayStart : public HaltedStart {
 protected:
  DisplayStart() {
    paint(kOwn, folder_ / "own.png");
    picture_ = readFile(folder_ / "own.png");
  }

  /// The only window on the screen becomes one of this size, in the middle.
  bool becomesWindow(int width, int height) const {
    const WindowAt place = {(1024 - width) / 2, (768 - height) / 2, width, height};
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{place}; });
  }

  /// The window of a picture with the bar below it, pixel by pixel.
  void expectSplash(const Quarters& picture, int buffer) const {
    const Picture expected = splashOf(picture, buffer);
    ASSERT_TRUE(becomesWindow(expected.width(), expected.height() + kBarHeight))
        << ::testing::PrintToString(screen_.shownWindows());
    const WindowAt window = screen_.shownWindows().front();
    const WindowAt above = {window.x, window.y, expected.width(), expected.height()};
    EXPECT_TRUE(eventually([&] { return screen_.grab(above) == expected; }));
    const WindowAt bar = {window.x, window.y + expected.height(), window.width, kBarHeight};
    const Picture before = screen_.grab(bar);
    EXPECT_TRUE(eventually([&] { return !(screen_.grab(bar) == before); })) << "the bar moves";
  }

  std::string allWindows() const {
    ChildOptions options;
    options.environment["DISPLAY"] = xServer_.display();
    return runChild({"xwininfo", "-root", "-tree"}, options).out;
  }
};

TEST_F(DisplayStart, ShowsThePictureWithTheBarBelowAndNothingElse) {
  startAndHalt();
  expectSplash(kOwn, 0);
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.err, HasSubstr("ShowSplash"));
  EXPECT_THAT(report(), HasSubstr("REPORT END\n"));
}

TEST_F(DisplayStart, LeavesAWhiteMarginAroundThePictureOnRequest) {
  startAndHalt({{"splash_buffer", "10"}});
  expectSplash(kOwn, 10);
}

class DisplayOverride : public DisplayStart {
 protected:
  std::string otherPicture() const {
    paint(kOther, folder_ / "other.png");
    return runChild({"base64", "-w0", folder_ / "other.png"}).out;
  }
};

TEST_F(DisplayOverride, ReplacesThePictureIfTheProducerAllowsIt) {
  tail_.canOverrideSplash = "1";
  startAndHalt({{"splash_image", otherPicture()}});
  expectSplash(kOther, 0);
}

TEST_F(DisplayOverride, KeepsThePictureIfNot) {
  tail_.canOverrideSplash = "0";
  startAndHalt({{"splash_image", otherPicture()}});
  expectSplash(kOwn, 0);
}

TEST_F(DisplayStart, GoesOnWithoutAPicture) {
  picture_.clear();
  startAndHalt();
  EXPECT_EQ(finish().exitStatus, 0);
  EXPECT_THAT(report(), HasSubstr("REPORT END\n"));
}

// All that a start asks for when it has the run thread: the one that looks for the display, those
// of the bar, those that hash archives.
class DisplayStartWithoutThread : public DisplayStart, public ::testing::WithParamInterface<int> {};

TEST_P(DisplayStartWithoutThread, GoesOn) {
  refusedThread_ = GetParam();
  startAndHalt();
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.signal, 0);
  EXPECT_THAT(report(), HasSubstr("REPORT END\n"));
}

INSTANTIATE_TEST_SUITE_P(, DisplayStartWithoutThread, ::testing::Range(2, 9));

TEST_F(DisplayStart, GoesOnWithoutTheLibraryOfWindows) {
  libraryPath_ = folder_ / "damaged";
  int damaged = 0;
  for (const std::string& name : namesIn("/usr/lib")) {
    if (!name.starts_with("libgnustep-gui.so.")) continue;
    writeFile(libraryPath_ + '/' + name, "no library");
    ++damaged;
  }
  ASSERT_GT(damaged, 0);
  startAndHalt();
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  const std::string line = "The library of windows cannot be loaded: ";
  const std::size_t at = result.err.find(line);
  EXPECT_NE(at, std::string::npos) << result.err;
  EXPECT_EQ(result.err.find(line, at + 1), std::string::npos) << "said more than once";
  EXPECT_THAT(result.err, Not(HasSubstr("There is no display")));
  EXPECT_THAT(report(), HasSubstr("REPORT END\n"));
}

TEST_F(DisplayStart, ShowsNothingWhenSilent) {
  startAndHalt({}, {"silent"});
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.err, Not(HasSubstr("ShowSplash")));
  EXPECT_THAT(report(), HasSubstr("REPORT END\n"));
}

TEST_F(DisplayStart, ShowsNothingWhenItOnlyPrepares) {
  startAndHalt({}, {"QYPREPARE_FOR_LAUNCH_ONLY"});
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.err, Not(HasSubstr("ShowSplash")));
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-3-complete/hello.txt"));
  EXPECT_FALSE(fs::exists(folder_ / "started")) << "Java was started";
}

// In the launcher's own process, whose end would take the window away in any case.
TEST_F(DisplayStart, ClosesItsWindowBeforeTheApplicationStarts) {
  hasJvmLibrary_ = true;
  startAndHalt({}, {"--sleep=60000"});
  ASSERT_TRUE(becomesWindow(120, 98));
  ASSERT_THAT(allWindows(), HasSubstr(" 120x98+"));
  letGoOn();
  ASSERT_TRUE(start_->waitForOutput("REPORT BEGIN\npid=" + std::to_string(start_->pid()) + "\n"))
      << start_->out() << start_->err();
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  EXPECT_THAT(allWindows(), HasSubstr("Root window id: "));
  EXPECT_THAT(allWindows(), Not(HasSubstr(" 120x98+")));
}

}  // namespace
}  // namespace quillory::testing
