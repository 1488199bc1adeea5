// The splash on a real screen. Pictures come from ImageMagick, what is seen from the X server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/temp_dir.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"
#include "ui/progress_tiles.h"

namespace quillory::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr int kBarHeight = 18;

// The place in the middle of the screen, as GNUstep rounds it.
WindowAt centred(int width, int height) {
  return {(1024 - width) / 2, (768 - height) / 2, width, height};
}

template <typename Table>
std::uint32_t tilePixel(const Table& table, int width, int x, int y) {
  const auto at = static_cast<std::size_t>(y * splash::tileRowBytes(width) + x * 3);
  return static_cast<std::uint32_t>(table[at + 2]) << 16 |
         static_cast<std::uint32_t>(table[at + 1]) << 8 | table[at];
}

std::uint32_t fillPixel(int y) { return tilePixel(splash::progress_lightblue, 4, 0, y); }
std::uint32_t trackPixel(int y) { return tilePixel(splash::track, 4, 0, y); }
std::uint32_t stripePixel(int x, int y) {
  return tilePixel(splash::progress_lighblue_indefinite, 10, x, y);
}

class SplashWindow : public ::testing::Test {
 protected:
  SplashWindow() : screen_(server_), demo_({.display = server_.display()}) {}

  // A PNG file by ImageMagick's arguments; "xc:red" has no size without -size before it.
  std::string paint(const std::vector<std::string>& arguments) {
    std::string path = pictures_ / ("picture" + std::to_string(++count_) + ".png");
    std::vector<std::string> command = {"convert-im6.q16"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back(path);
    EXPECT_EQ(runChild(command).exitStatus, 0);
    return path;
  }
  std::string redPicture(int width, int height) {
    return paint({"-size", std::to_string(width) + "x" + std::to_string(height), "xc:#c02040"});
  }

  // Shows a picture and waits until it is seen.
  void show(const std::string& picture, const std::vector<std::string>& before = {}) {
    demo_.commands(before);
    demo_.commands({"init", "configure " + picture, "show"});
  }

  WindowAt window() const {
    const std::vector<WindowAt> shown = screen_.shownWindows();
    return shown.size() == 1 ? shown.front() : WindowAt{};
  }
  bool becomes(const WindowAt& place) {
    return eventually([&] { return window() == place; });
  }
  bool shows(int x, int y, std::uint32_t colour) {
    return eventually([&] { return pixel(x, y) == colour; });
  }
  // A pixel of the window, from its upper left corner.
  std::uint32_t pixel(int x, int y) const {
    const WindowAt place = window();
    if (x >= place.width || y >= place.height) return 0;
    return screen_.grab({place.x + x, place.y + y, 1, 1}).at(0, 0);
  }
  Picture bar() const {
    const WindowAt place = window();
    return screen_.grab({place.x, place.y + place.height - kBarHeight, place.width, kBarHeight});
  }

  XServer server_;
  Screen screen_;
  TempDir pictures_;
  DemoProcess demo_;
  int count_ = 0;
};

TEST_F(SplashWindow, IsNotShownBeforeItIsAskedFor) {
  demo_.commands({"init", "configure " + redPicture(40, 20), "progress 30", "wait 100"});
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
}

TEST_F(SplashWindow, IsAWhiteSquareOf300PixelsWithoutAPicture) {
  demo_.commands({"init", "show"});
  ASSERT_TRUE(becomes(centred(300, 300)));
  for (const auto& [x, y] : {std::pair{0, 0}, {299, 0}, {0, 299}, {299, 299}, {150, 150}})
    EXPECT_TRUE(shows(x, y, kWhite)) << x << "," << y;
}

TEST_F(SplashWindow, IsOneWindowOfThePicturesSizeInTheMiddleWithoutBorder) {
  show(redPicture(400, 200));
  ASSERT_TRUE(shows(0, 0, 0xC02040));
  EXPECT_THAT(screen_.shownWindows(), ElementsAre(centred(400, 200)));
  const Picture picture = screen_.grab(centred(400, 200));
  EXPECT_EQ(picture.at(399, 0), 0xC02040U);
  EXPECT_EQ(picture.at(0, 199), 0xC02040U);
  EXPECT_EQ(picture.at(399, 199), 0xC02040U);
}

TEST_F(SplashWindow, GrowsBy18PixelsAboutItsCentreForTheBar) {
  show(redPicture(400, 200));
  demo_.command("progress 50");
  ASSERT_TRUE(becomes({312, 284 - 9, 400, 218}));
  EXPECT_TRUE(shows(0, 0, 0xC02040));
  EXPECT_TRUE(shows(0, 199, 0xC02040));
  demo_.command("hide-progress");
  EXPECT_TRUE(becomes(centred(400, 200)));
}

TEST_F(SplashWindow, IsCentredWithABarThatWasThereBefore) {
  demo_.commands({"init", "configure " + redPicture(400, 200), "progress 10", "show"});
  EXPECT_TRUE(becomes(centred(400, 218)));
  EXPECT_TRUE(shows(0, 217, fillPixel(17)));
}

TEST_F(SplashWindow, HasAWhiteMarginAroundThePicture) {
  show(redPicture(400, 200), {"buffer 10"});
  ASSERT_TRUE(becomes(centred(420, 220)));
  ASSERT_TRUE(shows(10, 10, 0xC02040));
  for (const auto& [x, y] : {std::pair{9, 100}, {410, 100}, {100, 9}, {100, 210}, {0, 0}})
    EXPECT_EQ(pixel(x, y), kWhite) << x << "," << y;
  EXPECT_EQ(pixel(409, 209), 0xC02040U);
  demo_.command("progress 0");
  ASSERT_TRUE(eventually([&] { return window().height == 238; }));
  EXPECT_TRUE(shows(10, 10, 0xC02040));
  EXPECT_EQ(pixel(10, 9), kWhite) << "10 pixels below the window's top";
}

TEST_F(SplashWindow, BlendsATransparentPictureWithWhite) {
  show(paint({"-size", "60x40", "xc:rgba(255,0,0,0.5)"}));
  ASSERT_TRUE(becomes(centred(60, 40)));
  EXPECT_TRUE(eventually([&] {
    const std::uint32_t seen = pixel(30, 20);
    return seen >> 16 == 0xFF && (seen >> 8 & 0xFF) >= 0x7E && (seen >> 8 & 0xFF) <= 0x80 &&
           (seen & 0xFF) == (seen >> 8 & 0xFF);
  })) << std::hex
      << pixel(30, 20);
}

TEST_F(SplashWindow, ShowsEveryKindOfPng) {
  const struct {
    std::string picture;
    std::uint32_t colour;
  } kinds[] = {
      {paint({"-size", "64x48", "xc:#336699", "-type", "TrueColor"}), 0x336699},
      {paint({"-size", "64x48", "xc:#346699", "-type", "TrueColorAlpha"}), 0x346699},
      {paint({"-size", "64x48", "xc:#356699", "-type", "Palette"}), 0x356699},
      {paint({"-size", "64x48", "xc:#366699", "-depth", "16", "-define", "png:bit-depth=16"}),
       0x366699},
      {paint({"-size", "64x48", "xc:#376699", "-interlace", "PNG"}), 0x376699},
      {paint({"-size", "64x48", "xc:#777777", "-type", "Grayscale"}), 0x777777},
      {paint({"-size", "64x48", "xc:#797979", "-type", "Grayscale", "-depth", "16"}), 0x797979},
      {paint({"-size", "64x48", "xc:white", "-type", "Bilevel"}), kWhite},
      {paint({"-size", "64x48", "xc:black", "-type", "Bilevel"}), 0},
  };
  demo_.command("init");
  for (const auto& [picture, colour] : kinds) {
    SCOPED_TRACE(picture);
    demo_.commands({"configure " + picture, "show"});
    EXPECT_TRUE(shows(5, 5, colour)) << std::hex << pixel(5, 5);
    EXPECT_EQ(window(), centred(64, 48));
  }
}

// 144 dots an inch: half the pixels, and 0.005 of one, which is cut off.
TEST_F(SplashWindow, HasTheSizeThatThePictureReports) {
  show(paint({"-size", "400x200", "xc:#c02040", "-units", "PixelsPerInch", "-density", "144"}));
  EXPECT_TRUE(becomes(centred(200, 100)));
  EXPECT_TRUE(shows(100, 50, 0xC02040));
  EXPECT_THAT(demo_.log(), ::testing::HasSubstr("Image Size: 200 : 100"));
}

TEST_F(SplashWindow, DrawsFillAndTrackToThePixel) {
  show(redPicture(480, 60));
  for (const int percent : {0, 1, 37, 99, 100}) {
    SCOPED_TRACE(percent);
    demo_.command("progress " + std::to_string(percent));
    const int boundary = percent * 480 / 100;
    Picture expected(480, kBarHeight);
    for (int y = 0; y < kBarHeight; ++y)
      for (int x = 0; x < 480; ++x) expected.at(x, y) = x < boundary ? fillPixel(y) : trackPixel(y);
    EXPECT_TRUE(eventually([&] { return window().height == 78 && bar() == expected; }));
    EXPECT_EQ(pixel(0, 59), 0xC02040U) << "the picture is above the bar";
  }
}

// The number of pixels by which the stripes have moved, or -1 when these are no stripes.
int phaseOf(const Picture& bar) {
  for (int phase = 0; phase < 10; ++phase) {
    bool matches = true;
    for (int y = 0; y < bar.height() && matches; ++y)
      for (int x = 0; x < bar.width() && matches; ++x)
        matches = bar.at(x, y) == stripePixel((x - phase + 10) % 10, y);
    if (matches) return phase;
  }
  return -1;
}

TEST_F(SplashWindow, MovesTheStripesOnePixelARedraw) {
  show(redPicture(303, 60));
  demo_.command("progress -1");
  ASSERT_TRUE(eventually([&] { return window().height == 78 && phaseOf(bar()) >= 0; }));
  std::set<int> phases;
  int steps = 0;
  int others = 0;
  int last = phaseOf(bar());
  const auto end = std::chrono::steady_clock::now() + 3s;
  while (std::chrono::steady_clock::now() < end) {
    const int phase = phaseOf(bar());
    ASSERT_GE(phase, 0) << "a bar without gaps";
    phases.insert(phase);
    if (phase == (last + 1) % 10) ++steps;
    if (phase != last && phase != (last + 1) % 10) ++others;
    last = phase;
  }
  EXPECT_EQ(phases.size(), 10U);
  EXPECT_GT(steps, 20);
  EXPECT_LT(others, steps) << "a busy machine misses one now and then";
}

TEST_F(SplashWindow, StopsMovingForAPercentage) {
  show(redPicture(300, 60));
  demo_.commands({"progress -1", "wait 100", "progress 40"});
  EXPECT_TRUE(shows(299, 77, trackPixel(17)));
  EXPECT_EQ(pixel(0, 77), fillPixel(17));
  std::this_thread::sleep_for(200ms);
  EXPECT_EQ(pixel(299, 77), trackPixel(17));
  demo_.command("progress -1");
  EXPECT_TRUE(eventually([&] { return phaseOf(bar()) >= 0; }));
}

TEST_F(SplashWindow, IsSmallWithoutAPicture) {
  show("/nonexistent/nativesplash.png");
  demo_.commands({"progress 50", "wait 50", "progress -1", "wait 50", "progress -100", "cleanup"});
  EXPECT_THAT(demo_.log(), ::testing::HasSubstr("Image Size: 0 : 0"));
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
}

TEST_F(SplashWindow, TakesWhatIsNoPictureForNone) {
  writeFile(pictures_.path() / "text.png", "no picture");
  writeFile(pictures_.path() / "empty.png", "");
  std::filesystem::create_directory(pictures_.path() / "folder.png");
  for (const std::string name : {"text.png", "empty.png", "folder.png", ""}) {
    SCOPED_TRACE(name);
    demo_.commands({"init", "configure " + (pictures_ / name), "show", "progress 10", "cleanup"});
  }
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST_F(SplashWindow, SurvivesEveryDamagedPng) {
  const std::string path = pictures_ / "damaged.png";
  const std::string whole = readFile(paint({"-size", "4x3", "xc:#336699", "-depth", "8"}));
  demo_.command("init");
  const auto load = [&](const std::string& content) {
    writeFile(path, content);
    demo_.command("configure " + path);
  };
  for (std::size_t length = 0; length < whole.size(); ++length) load(whole.substr(0, length));
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0x55);
    load(changed);
  }
  demo_.commands({"show", "progress 10", "cleanup"});
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

// The header of a PNG of 60000 x 60000 pixels, which would take 14 gigabytes.
TEST_F(SplashWindow, RefusesAPictureThatNoMemoryHolds) {
  std::string huge = readFile(redPicture(40, 20));
  huge.replace(16, 8, std::string("\0\0\xea\x60\0\0\xea\x60", 8));
  writeFile(pictures_.path() / "huge.png", huge);
  show(pictures_ / "huge.png");
  demo_.command("cleanup");
  EXPECT_THAT(demo_.log(), ::testing::HasSubstr("[Splash] The picture is too large to be shown."));
  EXPECT_THAT(demo_.log(), ::testing::HasSubstr("Image Size: 0 : 0"));
}

// Their decoders take what a file of some bytes asks for, up to gigabytes.
TEST_F(SplashWindow, RefusesPicturesOfOtherFormats) {
  const std::string png = redPicture(40, 20);
  demo_.command("init");
  for (const std::string format : {"gif", "tiff", "bmp", "ppm", "ico"}) {
    SCOPED_TRACE(format);
    const std::string other = pictures_ / ("other." + format);
    ASSERT_EQ(runChild({"convert-im6.q16", png, other}).exitStatus, 0);
    const std::size_t before = demo_.log().size();
    demo_.command("configure " + other);
    const std::string log = demo_.log().substr(before);
    EXPECT_THAT(log, ::testing::HasSubstr("[Splash] The picture is neither a PNG nor a JPEG"));
    EXPECT_THAT(log, ::testing::HasSubstr("Image Size: 0 : 0"));
  }
}

TEST_F(SplashWindow, ShowsAJpeg) {
  const std::string jpeg = pictures_ / "picture.jpg";
  for (const std::string interlace : {"None", "JPEG"}) {
    SCOPED_TRACE(interlace);
    ASSERT_EQ(
        runChild({"convert-im6.q16", "-size", "64x48", "xc:white", "-interlace", interlace, jpeg})
            .exitStatus,
        0);
    demo_.commands({"init", "configure " + jpeg, "show"});
    EXPECT_TRUE(becomes(centred(64, 48)));
    EXPECT_TRUE(shows(5, 5, kWhite));
    demo_.command("cleanup");
  }
  EXPECT_THAT(demo_.log(), ::testing::HasSubstr("Image Size: 64 : 48"));
}

TEST_F(SplashWindow, CanBeHiddenAndShownAgain) {
  show(redPicture(100, 50));
  ASSERT_TRUE(becomes(centred(100, 50)));
  demo_.command("hide");
  EXPECT_TRUE(eventually([&] { return screen_.shownWindows().empty(); }));
  demo_.command("show");
  EXPECT_TRUE(becomes(centred(100, 50)));
  EXPECT_TRUE(shows(5, 5, 0xC02040));
}

// As on a busy machine: the request to draw it has come before the main thread waits for one.
TEST_F(SplashWindow, IsDrawnWhenTheRequestCameBeforeTheWaitForOne) {
  show(redPicture(100, 50));
  ASSERT_TRUE(shows(5, 5, 0xC02040));
  for (int round = 0; round < 5; ++round) {
    SCOPED_TRACE(round);
    demo_.commands({"wait 20", "reshow"});
    ASSERT_TRUE(shows(5, 5, 0xC02040));
  }
}

TEST_F(SplashWindow, IsGoneWhenCleanupReturns) {
  show(redPicture(100, 50));
  demo_.command("progress -1");
  ASSERT_TRUE(eventually([&] { return !screen_.shownWindows().empty(); }));
  demo_.command("cleanup");
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  demo_.commands({"show", "progress 10", "hide", "cleanup"});
  EXPECT_THAT(screen_.shownWindows(), IsEmpty()) << "for good";
}

TEST_F(SplashWindow, LiesAboveAWindowThatWasThere) {
  screen_.cover({400, 300, 300, 200});
  show(redPicture(200, 100));
  ASSERT_TRUE(eventually([&] { return screen_.shownWindows().size() == 2; }));
  EXPECT_EQ(screen_.shownWindows().back(), centred(200, 100));
  screen_.uncover();
}

TEST_F(SplashWindow, IsDrawnAnewWhereItWasCovered) {
  show(redPicture(200, 100));
  demo_.command("progress 50");
  ASSERT_TRUE(shows(0, 117, fillPixel(17)));
  const WindowAt place = window();
  const Picture before = screen_.grab(place);
  screen_.cover({place.x + 50, place.y + 40, 300, 200});
  screen_.uncover();
  EXPECT_TRUE(eventually([&] { return screen_.grab(place) == before; }));
}

TEST_F(SplashWindow, SurvivesSizesThatNoScreenHas) {
  show(redPicture(200, 100));
  demo_.commands({"size -5 -7", "wait 50", "size 0 0", "wait 50", "size 3000 2", "wait 50",
                  "size 2147483647 1", "wait 50", "buffer -1000000000", "progress 5", "wait 50",
                  "hide", "cleanup"});
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST_F(SplashWindow, StartsNothingAndLeavesNothingWhenItIsClicked) {
  show(redPicture(400, 200));
  ASSERT_TRUE(shows(0, 0, 0xC02040));
  server_.click(512, 384);
  demo_.command("progress 50");
  EXPECT_TRUE(shows(0, 217, fillPixel(17)));
  EXPECT_EQ(demo_.finish().exitStatus, 0);
  EXPECT_THAT(demo_.leftBehind(), IsEmpty());
}

TEST_F(SplashWindow, RunsTheScriptedDemonstration) {
  show(redPicture(200, 100));
  demo_.command("script");
  EXPECT_THAT(screen_.shownWindows(), IsEmpty());
  EXPECT_THAT(demo_.log(), ::testing::ContainsRegex("AppRunner running!(.|\n)*HideSplash"));
}

}  // namespace
}  // namespace quillory::testing
