#include "ui/progress_tiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::splash {
namespace {

struct Pixel {
  int blue, green, red;
  bool operator==(const Pixel&) const = default;
};

template <typename Table>
Pixel pixelAt(const Table& table, int width, int x, int y) {
  const auto at = static_cast<std::size_t>(y * tileRowBytes(width) + x * 3);
  return {table[at], table[at + 1], table[at + 2]};
}

TEST(Tiles, HaveTheLayoutOfDeviceIndependentBitmaps) {
  EXPECT_EQ(track.size(), 18U * 12);
  EXPECT_EQ(progress_lightblue.size(), 18U * 12);
  EXPECT_EQ(progress_lighblue_indefinite.size(), 18U * 32);
  for (std::size_t row = 0; row < 18; ++row) {
    EXPECT_EQ(progress_lighblue_indefinite[row * 32 + 30], 0) << "padding of row " << row;
    EXPECT_EQ(progress_lighblue_indefinite[row * 32 + 31], 0) << "padding of row " << row;
  }
}

// Tiles overlap by a pixel, and the boundary is at any pixel: a column must look like any other.
TEST(Tiles, OfTrackAndFillAreTheSameInEveryColumn) {
  for (int y = 0; y < kTileHeight; ++y) {
    for (int x = 1; x < 4; ++x) {
      EXPECT_EQ(pixelAt(track, 4, x, y), pixelAt(track, 4, 0, y));
      EXPECT_EQ(pixelAt(progress_lightblue, 4, x, y), pixelAt(progress_lightblue, 4, 0, y));
    }
  }
}

TEST(Tiles, OfTheFillAreLightBlue) {
  for (int y = 0; y < kTileHeight; ++y) {
    const Pixel pixel = pixelAt(progress_lightblue, 4, 0, y);
    EXPECT_GT(pixel.blue, pixel.green);
    EXPECT_GT(pixel.green, pixel.red);
    EXPECT_GT(pixel.red, 100) << "row " << y;
  }
}

TEST(Tiles, OfTheTrackAreAQuietGrey) {
  for (int y = 0; y < kTileHeight; ++y) {
    const Pixel pixel = pixelAt(track, 4, 0, y);
    EXPECT_LT(pixel.blue - pixel.red, 25) << "row " << y;
    EXPECT_GT(pixel.red, 180) << "row " << y;
  }
}

// From dark to light or from light to dark between the edges, never a visible step.
TEST(Tiles, HaveASoftGradient) {
  for (int y = 2; y < kTileHeight - 1; ++y) {
    EXPECT_LE(pixelAt(progress_lightblue, 4, 0, y).red,
              pixelAt(progress_lightblue, 4, 0, y - 1).red);
    EXPECT_LE(
        pixelAt(progress_lightblue, 4, 0, y - 1).red - pixelAt(progress_lightblue, 4, 0, y).red, 5);
    EXPECT_GE(pixelAt(track, 4, 0, y).red, pixelAt(track, 4, 0, y - 1).red);
    EXPECT_LE(pixelAt(track, 4, 0, y).red - pixelAt(track, 4, 0, y - 1).red, 5);
  }
}

// Half of each row is the fill's own colour or on the way to it, the other half is lighter; each
// row is the one below it, moved.
TEST(Tiles, OfTheStripesMatchTheFill) {
  for (int y = 0; y < kTileHeight; ++y) {
    int whole = 0;
    for (int x = 0; x < kStripesTileWidth; ++x) {
      const Pixel stripe = pixelAt(progress_lighblue_indefinite, kStripesTileWidth, x, y);
      const Pixel fill = pixelAt(progress_lightblue, 4, 0, y);
      EXPECT_GE(stripe.red, fill.red);
      if (stripe == fill) ++whole;
    }
    EXPECT_TRUE(whole == 4 || whole == 5) << "row " << y << " has " << whole;
  }
}

// By hand: the top left corner of the fill is red 122, green 181, blue 228.
TEST(Tiles, StoreBlueFirst) {
  EXPECT_EQ(progress_lightblue[0], 228);
  EXPECT_EQ(progress_lightblue[1], 181);
  EXPECT_EQ(progress_lightblue[2], 122);
}

TEST(ToRedGreenBlue, ReversesEachPixelAndSkipsThePadding) {
  const std::uint8_t pixels[] = {1, 2, 3, 4,  5,  6,  99, 98,  //
                                 7, 8, 9, 10, 11, 12, 97, 96};
  EXPECT_THAT(toRedGreenBlue(pixels, 2, 2),
              ::testing::ElementsAre(3, 2, 1, 6, 5, 4, 0, 0, 9, 8, 7, 12, 11, 10, 0, 0));
}

TEST(ToRedGreenBlue, HasNoPaddingWhereRowsEndOnAFourthByte) {
  const std::uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  EXPECT_THAT(toRedGreenBlue(pixels, 4, 1),
              ::testing::ElementsAre(3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10));
}

TEST(TileRowBytes, RoundsUpToAMultipleOfFour) {
  EXPECT_EQ(tileRowBytes(1), 4);
  EXPECT_EQ(tileRowBytes(4), 12);
  EXPECT_EQ(tileRowBytes(10), 32);
}

}  // namespace
}  // namespace quillory::splash
