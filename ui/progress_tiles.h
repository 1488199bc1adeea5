// The pictures from which the progress bar is put together, built into the program so that it needs
// no image files. A pixel is three bytes, blue, green and red; rows run from the top, and each is
// padded to a multiple of four bytes, as in a device-independent bitmap.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillory::splash {

inline constexpr int kTileHeight = 18;
inline constexpr int kFillTileWidth = 4;
inline constexpr int kTrackTileWidth = 4;
inline constexpr int kStripesTileWidth = 10;

/// Bytes from one row to the next.
constexpr int tileRowBytes(int width) { return (width * 3 + 3) / 4 * 4; }

template <int width>
using TilePixels =
    std::array<std::uint8_t, static_cast<std::size_t>(tileRowBytes(width)) * kTileHeight>;

/// The empty part of the bar.
extern const TilePixels<kTrackTileWidth> track;
/// The filled part of a bar that shows a percentage.
extern const TilePixels<kFillTileWidth> progress_lightblue;
/// One period of the stripes of a bar that shows no percentage. The spelling is the agreed one.
extern const TilePixels<kStripesTileWidth> progress_lighblue_indefinite;

/// The same pixels as red, green, blue, with the same row length; the padding is 0. `pixels` holds
/// tileRowBytes(width) * height bytes.
std::vector<std::uint8_t> toRedGreenBlue(const std::uint8_t* pixels, int width, int height);

}  // namespace quillory::splash
