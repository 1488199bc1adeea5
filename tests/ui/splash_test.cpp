#include "ui/splash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/ui/recorded_splash.h"
#include "ui/for_embedders.h"

namespace quillory::splash {
namespace {

using ::testing::_;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScopedReplace;

using SplashInit = Splash;

TEST_F(SplashInit, MakesTheWindowWithoutShowingIt) {
  ::testing::internal::CaptureStdout();
  init();
  EXPECT_THAT(asked, ElementsAre("create 400x200"));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "[Splash] Initing splash...\n[Splash] Loading images...\n");
}

using ConfigureSplash = Splash;

TEST_F(ConfigureSplash, GivesTheWindowThePicturesSizeAboutItsCentre) {
  windowNow = {100, 50, 300, 300};
  pictureNow = {640.9, 480.2};
  ::testing::internal::CaptureStdout();
  configureSplash("/a b/nativesplash.png");
  EXPECT_THAT(asked, ElementsAre("load /a b/nativesplash.png", "frame -70 -40 640 480"));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "[Splash] Resizing to 640 480\n"
            "[Splash] configureSplash with URL /a b/nativesplash.png\n");
}

TEST_F(ConfigureSplash, SaysTheSizeAfterTheUrl) {
  const ScopedReplace systemLog(
      platformCalls.systemLog, +[](const char* message) { std::printf("system: %s\n", message); });
  ::testing::internal::CaptureStdout();
  configureSplash("p.png");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "[Splash] Resizing to 400 200\n"
            "[Splash] configureSplash with URL p.png\n"
            "system: Image Size: 400 : 200\n");
}

TEST_F(ConfigureSplash, GoesOnWithoutAThreadForTheStripes) {
  platformCalls.window.startRedrawThread = [](void*) -> void* {
    asked.emplace_back("no thread");
    return nullptr;
  };
  setProgress(kProgressIndefinite);
  setProgress(50);
  setProgress(kProgressIndefinite);
  cleanup();
  EXPECT_THAT(asked, ::testing::Not(::testing::Contains(::testing::HasSubstr("cancel"))));
  EXPECT_EQ(progress(), kProgressIndefinite);
}

TEST_F(ConfigureSplash, LogsTheSizeRoundedAndUsesItTruncated) {
  pictureNow = {200.6, 100.5};
  configureSplash("p.png");
  EXPECT_THAT(log_->messages(), ElementsAre("Image Size: 201 : 100"));
  EXPECT_EQ(windowNow.width, 200);
  EXPECT_EQ(windowNow.height, 100);
}

TEST_F(ConfigureSplash, ShrinksToTheMarginWithoutAPicture) {
  pictureNow = {0, 0};
  setSplashBuffer(7);
  configureSplash("missing.png");
  EXPECT_EQ(windowNow.width, 14);
  EXPECT_EQ(windowNow.height, 14);
}

TEST_F(ConfigureSplash, SurvivesSizesBeyondEveryInteger) {
  pictureNow = {1e300, -5};
  setSplashBuffer(INT_MAX);
  configureSplash("huge.png");
  EXPECT_EQ(windowNow.width, INT_MAX);
  EXPECT_EQ(windowNow.height, INT_MAX);
  setSplashBuffer(INT_MIN);
  setFrameSizeWithBar();
  EXPECT_LT(windowNow.height, 0);
}

using ShowSplash = Splash;

TEST_F(ShowSplash, ShowsTheWindowAndSaysSo) {
  showSplash();
  EXPECT_THAT(asked, ElementsAre("show"));
  EXPECT_THAT(log_->messages(), ElementsAre("ShowSplash"));
}

using SetProgress = Splash;

TEST_F(SetProgress, ClampsItsValue) {
  static constexpr struct {
    int value, stored;
  } kCases[] = {{150, 100}, {101, 100},     {100, 100},  {0, 0},    {-1, -1},
                {-50, -50}, {-99, -99},     {-500, 0},   {-101, 0}, {-100, -100},
                {37, 37},   {INT_MAX, 100}, {INT_MIN, 0}};
  for (const auto& [value, stored] : kCases) {
    setProgress(value);
    EXPECT_EQ(progress(), stored) << value;
  }
}

TEST_F(SetProgress, MakesRoomForTheBarBeforeItShows) {
  setProgress(40);
  EXPECT_THAT(asked, ElementsAre("frame 100 91 400 218", "redraw"));
}

TEST_F(SetProgress, MakesRoomForAnyStateButTheHiddenOne) {
  setProgress(-50);
  EXPECT_EQ(windowNow.height, 218);
  EXPECT_THAT(nextDrawing(400, 218).tiles, IsEmpty());
}

TEST_F(SetProgress, DoesNothingForTheSameValue) {
  setProgress(kProgressIndefinite);
  asked.clear();
  setProgress(kProgressIndefinite);
  EXPECT_THAT(asked, IsEmpty());
}

TEST_F(SetProgress, TakesAClampedValueForTheSame) {
  setProgress(100);
  asked.clear();
  setProgress(4711);
  EXPECT_THAT(asked, IsEmpty());
}

TEST_F(SetProgress, StartsAThreadForTheIndefiniteBar) {
  setProgress(40);
  asked.clear();
  setProgress(kProgressIndefinite);
  EXPECT_THAT(asked, ::testing::Contains("start 1"));
  EXPECT_EQ(asked.back(), "redraw");
  EXPECT_THAT(asked, ::testing::Not(::testing::Contains(::testing::StartsWith("frame"))));
}

TEST_F(SetProgress, EndsTheThreadForAPercentage) {
  setProgress(kProgressIndefinite);
  asked.clear();
  setProgress(40);
  EXPECT_THAT(asked, ElementsAre("cancel 1", "redraw"));
}

TEST_F(SetProgress, StartsANewThreadWithTheOneRedrawer) {
  setProgress(kProgressIndefinite);
  setProgress(40);
  asked.clear();
  setProgress(kProgressIndefinite);
  EXPECT_THAT(asked, ElementsAre("start 2", "redraw"));
}

TEST_F(SetProgress, EndsTheThreadForAnotherNegativeState) {
  setProgress(kProgressIndefinite);
  asked.clear();
  setProgress(-2);
  EXPECT_THAT(asked, ElementsAre("cancel 1", "redraw"));
}

TEST_F(SetProgress, HidesTheBarThenEndsTheThread) {
  setProgress(kProgressIndefinite);
  asked.clear();
  setProgress(kProgressHidden);
  EXPECT_THAT(asked, ElementsAre("frame 100 100 400 200", "cancel 1", "redraw"));
}

// Another thread draws as soon as it is asked to.
std::vector<int> drawn;

TEST_F(SetProgress, StoresTheStateBeforeItAsksForARedraw) {
  drawn.clear();
  const ScopedReplace<void (*)()> redraw(
      platformCalls.window.requestRedraw, +[] { drawn.push_back(progress()); });
  for (const int value : {40, kProgressIndefinite, -50, 41, kProgressHidden}) setProgress(value);
  EXPECT_THAT(drawn, ElementsAre(40, kProgressIndefinite, -50, 41, kProgressHidden));
}

using HideSplash = Splash;

TEST_F(HideSplash, TakesTheWindowOffTheScreen) {
  hideSplash();
  EXPECT_THAT(asked, ElementsAre("off"));
  EXPECT_THAT(log_->messages(), ElementsAre("HideSplash"));
}

using Cleanup = Splash;

TEST_F(Cleanup, HidesStopsAndClosesOnTheMainThread) {
  setProgress(kProgressIndefinite);
  asked.clear();
  cleanup();
  EXPECT_THAT(asked, ElementsAre("main{", "off", "cancel 1", "close", "}"));
  EXPECT_THAT(log_->messages(),
              ElementsAre("Called splash.cleanup", "Synced call to splash.cleanup", "HideSplash"));
}

TEST_F(Cleanup, MayBeCalledTwice) {
  setProgress(kProgressIndefinite);
  cleanup();
  asked.clear();
  cleanup();
  EXPECT_THAT(asked, ElementsAre("main{", "off", "close", "}"));
}

using SetFrameSize = Splash;

TEST_F(SetFrameSize, KeepsTheCentre) {
  windowNow = {10, 20, 100, 50};
  setFrameSize(101, 40);
  EXPECT_EQ(windowNow.x, 9.5);
  EXPECT_EQ(windowNow.y, 25);
  EXPECT_EQ(windowNow.width, 101);
  EXPECT_EQ(windowNow.height, 40);
}

TEST_F(SetFrameSize, ComputesFromAZeroFrameWithoutAWindow) {
  windowNow = {};
  setFrameSize(30, 10);
  EXPECT_THAT(asked, ElementsAre("frame -15 -5 30 10"));
}

using SplashBuffer = Splash;

TEST_F(SplashBuffer, SurroundsThePicture) {
  setSplashBuffer(10);
  setFrameSizeWithoutBar();
  EXPECT_EQ(windowNow.width, 420);
  EXPECT_EQ(windowNow.height, 220);
  setFrameSizeWithBar();
  EXPECT_EQ(windowNow.width, 420);
  EXPECT_EQ(windowNow.height, 238);
  const Drawing drawing = nextDrawing(420, 238);
  EXPECT_EQ(drawing.pictureX, 10);
  EXPECT_EQ(drawing.pictureY + 200, 238 - 10) << "10 pixels below the top";
}

std::vector<int> placesOf(const std::vector<TileAt>& tiles, Tile tile) {
  std::vector<int> places;
  for (const TileAt& at : tiles)
    if (at.tile == tile) places.push_back(at.x);
  return places;
}

TEST(LayoutPercentBar, DrawsOnlyTheTrackForNothing) {
  EXPECT_THAT(layoutPercentBar(0, 10),
              ElementsAre(TileAt{Tile::kTrack, 0}, TileAt{Tile::kTrack, 3}, TileAt{Tile::kTrack, 6},
                          TileAt{Tile::kTrack, 9}));
}

TEST(LayoutPercentBar, StartsTheTrackAtTheLeftEdgeForZeroPercentOf300) {
  const std::vector<TileAt> tiles = layoutPercentBar(0, 300);
  EXPECT_EQ(tiles.size(), 100U);
  EXPECT_EQ(tiles.front(), (TileAt{Tile::kTrack, 0}));
  EXPECT_EQ(tiles.back(), (TileAt{Tile::kTrack, 297}));
}

TEST(LayoutPercentBar, DrawsTheFillFirstAndTheTrackFromTheBoundary) {
  EXPECT_THAT(
      layoutPercentBar(50, 14),
      ElementsAre(TileAt{Tile::kFill, 0}, TileAt{Tile::kFill, 3}, TileAt{Tile::kFill, 6},
                  TileAt{Tile::kTrack, 7}, TileAt{Tile::kTrack, 10}, TileAt{Tile::kTrack, 13}));
}

TEST(LayoutPercentBar, DrawsOnlyTheFillForEverything) {
  EXPECT_THAT(placesOf(layoutPercentBar(100, 10), Tile::kFill), ElementsAre(0, 3, 6, 9));
  EXPECT_THAT(placesOf(layoutPercentBar(100, 10), Tile::kTrack), IsEmpty());
}

TEST(LayoutPercentBar, DrawsNoFillForLessThanAPixel) {
  EXPECT_THAT(placesOf(layoutPercentBar(1, 99), Tile::kFill), IsEmpty());
  EXPECT_THAT(placesOf(layoutPercentBar(1, 100), Tile::kFill), ElementsAre(0));
  EXPECT_EQ(placesOf(layoutPercentBar(1, 100), Tile::kTrack).front(), 1);
}

TEST(LayoutPercentBar, PutsTheBoundaryAtTheTruncatedPixel) {
  static constexpr struct {
    int percent, width, boundary;
  } kCases[] = {{37, 480, 177}, {99, 480, 475}, {33, 301, 99}, {50, 1, 0}};
  for (const auto& [percent, width, boundary] : kCases)
    EXPECT_EQ(placesOf(layoutPercentBar(percent, width), Tile::kTrack).front(), boundary);
}

TEST(LayoutPercentBar, DrawsNothingInAViewWithoutWidth) {
  EXPECT_THAT(layoutPercentBar(50, 0), IsEmpty());
}

TEST(LayoutStripes, CoverTheViewFromLeftOfItsEdge) {
  EXPECT_THAT(placesOf(layoutStripes(0, 10, 25), Tile::kStripes), ElementsAre(-10, 0, 10, 20));
  EXPECT_THAT(placesOf(layoutStripes(3, 10, 25), Tile::kStripes), ElementsAre(-7, 3, 13, 23));
  EXPECT_THAT(placesOf(layoutStripes(10, 10, 25), Tile::kStripes), ElementsAre(0, 10, 20));
}

using NextDrawing = Splash;

TEST_F(NextDrawing, CreepsOnePixelARedrawAndJumpsAfterEleven) {
  setProgress(kProgressIndefinite);
  // Begins at the step where an earlier test has left the stripes.
  int expected = nextDrawing(300, 318).tiles.front().x;
  for (int redraw = 0; redraw < 33; ++redraw) {
    expected = expected == 0 ? -10 : expected + 1;
    EXPECT_EQ(nextDrawing(300, 318).tiles.front().x, expected) << "redraw " << redraw;
  }
}

TEST_F(NextDrawing, LeavesTheStripesWhereTheyAreForAPercentage) {
  setProgress(kProgressIndefinite);
  const int before = nextDrawing(300, 318).tiles.front().x;
  setProgress(50);
  nextDrawing(300, 318);
  setProgress(kProgressIndefinite);
  EXPECT_EQ(nextDrawing(300, 318).tiles.front().x, before == 0 ? -10 : before + 1);
}

TEST_F(NextDrawing, HasNoBarWhileItIsHidden) {
  EXPECT_THAT(nextDrawing(400, 200).tiles, IsEmpty());
}

TEST_F(NextDrawing, PutsThePictureInTheMiddleBelowTheMargin) {
  EXPECT_EQ(nextDrawing(401, 218).pictureX, 0);
  EXPECT_EQ(nextDrawing(405, 218).pictureX, 2);
  EXPECT_EQ(nextDrawing(397, 218).pictureX, -1) << "integer division";
  EXPECT_EQ(nextDrawing(400, 218).pictureY, 18);
  setSplashBuffer(10);
  EXPECT_EQ(nextDrawing(400, 218).pictureY, 8);
}

TEST(SplashWithoutPlatform, KeepsItsStateAndTouchesNothing) {
  const CapturedLog log;
  init();
  configureSplash("missing.png");
  showSplash();
  setProgress(kProgressIndefinite);
  EXPECT_EQ(progress(), kProgressIndefinite);
  hideProgress();
  cleanup();
  EXPECT_TRUE(log.contains("Synced call to splash.cleanup"));
}

}  // namespace
}  // namespace quillory::splash
