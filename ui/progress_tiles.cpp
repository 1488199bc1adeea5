#include "ui/progress_tiles.h"

namespace quillory::splash {
namespace {

struct Colour {
  int red, green, blue;
};

// `part` of `whole` on the way from one colour to the other, rounded.
constexpr Colour mix(Colour from, Colour to, int part, int whole) {
  const auto channel = [part, whole](int a, int b) {
    return (a * (whole - part) + b * part + whole / 2) / whole;
  };
  return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

// From top to bottom: an edge of one row that sets the bar off from the picture, a soft gradient,
// and an edge of one row against the desktop, which may be light or dark.
struct Shading {
  Colour topEdge, top, bottom, bottomEdge;

  constexpr Colour at(int row) const {
    if (row == 0) return topEdge;
    if (row == kTileHeight - 1) return bottomEdge;
    return mix(top, bottom, row - 1, kTileHeight - 3);
  }
};

constexpr Shading kTrackShading = {
    {188, 197, 208}, {212, 219, 227}, {234, 238, 243}, {190, 199, 209}};
constexpr Shading kFillShading = {
    {122, 181, 228}, {190, 224, 250}, {130, 192, 240}, {104, 164, 214}};
constexpr Shading kGapShading = {
    {152, 199, 236}, {222, 240, 253}, {182, 219, 247}, {134, 184, 226}};

template <int width>
constexpr void setPixel(TilePixels<width>& pixels, int x, int y, Colour colour) {
  const int offset = y * tileRowBytes(width) + x * 3;
  const auto at = static_cast<std::size_t>(offset);
  pixels[at] = static_cast<std::uint8_t>(colour.blue);
  pixels[at + 1] = static_cast<std::uint8_t>(colour.green);
  pixels[at + 2] = static_cast<std::uint8_t>(colour.red);
}

template <int width>
constexpr TilePixels<width> shadedTile(const Shading& shading) {
  TilePixels<width> pixels{};
  for (int y = 0; y < kTileHeight; ++y)
    for (int x = 0; x < width; ++x) setPixel<width>(pixels, x, y, shading.at(y));
  return pixels;
}

// Stripes that lean to the right by one pixel in two rows, half of the period wide. The pixels at
// both sides of a stripe lie half under it, so that its edges look straight.
constexpr TilePixels<kStripesTileWidth> stripedTile() {
  constexpr int kHalfPixels = 2 * kStripesTileWidth;
  TilePixels<kStripesTileWidth> pixels{};
  for (int y = 0; y < kTileHeight; ++y) {
    for (int x = 0; x < kStripesTileWidth; ++x) {
      int covered = 0;
      for (int half = 2 * x; half < 2 * x + 2; ++half)
        if ((half + y) % kHalfPixels < kStripesTileWidth) ++covered;
      setPixel<kStripesTileWidth>(pixels, x, y,
                                  mix(kGapShading.at(y), kFillShading.at(y), covered, 2));
    }
  }
  return pixels;
}

}  // namespace

constinit const TilePixels<kTrackTileWidth> track = shadedTile<kTrackTileWidth>(kTrackShading);
constinit const TilePixels<kFillTileWidth> progress_lightblue =
    shadedTile<kFillTileWidth>(kFillShading);
constinit const TilePixels<kStripesTileWidth> progress_lighblue_indefinite = stripedTile();

std::vector<std::uint8_t> toRedGreenBlue(const std::uint8_t* pixels, int width, int height) {
  const auto rowBytes = static_cast<std::size_t>(tileRowBytes(width));
  std::vector<std::uint8_t> reversed(rowBytes * static_cast<std::size_t>(height));
  for (std::size_t row = 0; row < reversed.size(); row += rowBytes) {
    for (std::size_t at = row; at < row + static_cast<std::size_t>(width) * 3; at += 3) {
      reversed[at] = pixels[at + 2];
      reversed[at + 1] = pixels[at + 1];
      reversed[at + 2] = pixels[at];
    }
  }
  return reversed;
}

}  // namespace quillory::splash
